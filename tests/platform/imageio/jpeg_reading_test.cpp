#include <gtest/gtest.h>

#include "tests/platform/imageio/jpeg_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Kind {
  const char* name;
  std::vector<std::string> words;
  unsigned components = 3;
};

class JpegReading : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("cjpeg");
    OSTRA_NEEDS_PROGRAM("djpeg");
  }
};

TEST_P(JpegReading, GivesThePixelsThatDjpegReads) {
  const Bytes file = jpegOf(GetParam().words, GetParam().components);
  EXPECT_EQ(colourSamples(decoded(file)), samplesByDjpeg(file));
}

TEST_P(JpegReading, TellsSizeDepthAndModel) {
  const Dictionary tree = propertiesOf(jpegOf(GetParam().words, GetParam().components)).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(8));
  EXPECT_EQ(tree.at("ColorModel"), Value(GetParam().components == 1 ? "Gray" : "RGB"));
  EXPECT_EQ(tree.count("HasAlpha"), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, JpegReading,
    testing::Values(Kind{"Baseline420", {"-sample", "2x2"}}, Kind{"Baseline422", {"-sample", "2x1"}},
                    Kind{"Baseline440", {"-sample", "1x2"}}, Kind{"Baseline444", {"-sample", "1x1"}},
                    Kind{"Progressive", {"-progressive"}}, Kind{"Restarts", {"-restart", "1"}},
                    Kind{"Arithmetic", {"-arithmetic"}}, Kind{"StoredAsRgb", {"-rgb"}},
                    Kind{"Gray", {"-grayscale"}, 1},
                    Kind{"GrayProgressive", {"-grayscale", "-progressive"}, 1}),
    [](const testing::TestParamInfo<Kind>& kind) { return std::string(kind.param.name); });

class JpegInk : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }

  static Bytes inkJpeg() {
    const TemporaryFolder folder;
    writeFile(folder.path("raw"), softSamples(kWidth, kHeight, 4, 8));
    return madeByImageMagick(
        {"-size", "47x33", "-depth", "8", "cmyk:" + folder.path("raw"), "-quality", "98"}, "jpg");
  }
  // The Adobe mark says 0 for ink as it is and 2 for YCCK.
  static Bytes withTransform(Bytes file, std::uint8_t transform) {
    file.at(positionOf("Adobe", file) + 11) = transform;
    return file;
  }
  static Bytes samplesByImageMagick(const Bytes& file) {
    const TemporaryFolder folder;
    writeFile(folder.path("a.jpg"), file);
    run({"convert", folder.path("a.jpg"), "-depth", "8", "cmyk:" + folder.path("raw")});
    return readFile(folder.path("raw"));
  }
  static Bytes allSamples(const Pixels& pixels) {
    return Bytes(pixels.bytes.view.begin(), pixels.bytes.view.end());
  }
};

TEST_F(JpegInk, StoredTheAdobeWayIsAnAmount) {
  const Bytes file = inkJpeg();
  const Pixels pixels = decoded(file);
  EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::cmyk);
  EXPECT_EQ(allSamples(pixels), samplesByImageMagick(file));
  // And the amount is that of the picture that it was made from.
  const Bytes made = softSamples(kWidth, kHeight, 4, 8);
  double error = 0;
  for (std::size_t i = 0; i < made.size(); ++i) error += std::abs(made[i] - allSamples(pixels)[i]);
  EXPECT_LT(error / static_cast<double>(made.size()), 2.0);
}

TEST_F(JpegInk, IsReadWithAndWithoutAColourTransform) {
  for (const std::uint8_t transform : {std::uint8_t{0}, std::uint8_t{2}}) {
    const Bytes file = withTransform(inkJpeg(), transform);
    EXPECT_EQ(allSamples(decoded(file)), samplesByImageMagick(file)) << int{transform};
  }
}

TEST_F(JpegInk, WithoutTheAdobeMarkIsNotInverted) {
  const Bytes marked = withTransform(inkJpeg(), 0);
  Bytes expected = allSamples(decoded(marked));
  for (std::uint8_t& sample : expected) sample = static_cast<std::uint8_t>(255 - sample);
  EXPECT_EQ(allSamples(decoded(withoutSegment(marked, "Adobe"))), expected);
}

class JpegOddities : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("cjpeg"); }
};

TEST_F(JpegOddities, TwelveBitsAreRefused) {
  Bytes file = jpegOf({});
  const std::size_t frame = positionOf("\xFF\xC0", file);
  file.at(frame + 4) = 12;
  EXPECT_EQ(faultOf(decodeBytes(file)), Fault{FaultKind::damaged});
}

TEST_F(JpegOddities, StrayBytesBeforeTheEndAreHarmlessAndManyAreNot) {
  const Bytes file = jpegOf({});
  Bytes few = file;
  few.insert(few.end() - 2, 4, 0);
  EXPECT_EQ(colourSamples(decoded(few)), colourSamples(decoded(file)));
  Bytes many = file;
  many.insert(many.end() - 2, 400, 0);
  EXPECT_EQ(faultOf(decodeBytes(many)), Fault{FaultKind::damaged});
}

TEST_F(JpegOddities, MorePassesThanTheLimitAreRefused) {
  const Bytes file = jpegOf({"-progressive"});  // ten passes
  Limits limits;
  limits.scans = 10;
  EXPECT_TRUE(std::holds_alternative<Pixels>(decodeBytes(file, limits)));
  limits.scans = 9;
  EXPECT_EQ(faultOf(decodeBytes(file, limits)), (Fault{FaultKind::limit, LimitName::scans}));
}

TEST_F(JpegOddities, AMissingEndMarkerLosesNothingOfASingleScan) {
  Bytes file = jpegOf({});
  const Bytes whole = colourSamples(decoded(file));
  file.resize(file.size() - 2);
  EXPECT_EQ(colourSamples(decoded(file)), whole);
  Bytes progressive = jpegOf({"-progressive"});
  progressive.resize(progressive.size() - 2);
  EXPECT_EQ(faultOf(decodeBytes(progressive)), Fault{FaultKind::damaged});
}

TEST_F(JpegOddities, WhatFollowsTheEndIsNotLookedAt) {
  Bytes file = jpegOf({});
  const Bytes whole = colourSamples(decoded(file));
  const Bytes more = randomBytes(1000);
  file.insert(file.end(), more.begin(), more.end());
  EXPECT_EQ(colourSamples(decoded(file)), whole);
}

// A multi-picture index of `types`, the first entry being the picture that it stands in.
Bytes pictureIndex(const std::vector<std::uint32_t>& types, bool bigEndian) {
  Bytes index = bytesOfText(bigEndian ? "MM" : "II");
  const auto number = [&](std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
      index.push_back(static_cast<std::uint8_t>(value >> 8 * (bigEndian ? bytes - 1 - i : i)));
  };
  number(42, 2);
  number(8, 4);
  number(1, 2);  // entries of the directory
  number(0xB002, 2);
  number(7, 2);
  number(static_cast<std::uint32_t>(16 * types.size()), 4);
  number(26, 4);  // after this directory
  number(0, 4);
  for (const std::uint32_t type : types) {
    number(type, 4);
    for (int i = 0; i < 3; ++i) number(0, 4);
  }
  return index;
}

TEST_F(JpegOddities, OnlyFullViewsOfAMultiPictureFileCount) {
  const Bytes file = jpegOf({});
  const auto countOf = [&](const std::vector<std::uint32_t>& types, bool bigEndian = true) {
    const Bytes segment = jpegSegment(0xE2, std::string_view{"MPF\0", 4}, pictureIndex(types, bigEndian));
    return std::get<std::unique_ptr<Reader>>(openBytes(withJpegSegment(file, segment)))->opened().count;
  };
  EXPECT_EQ(countOf({0x30000, 0x10001, 0x10002}), 1u) << "previews";
  EXPECT_EQ(countOf({0x30000, 0}), 1u) << "a gain map";
  EXPECT_EQ(countOf({0x20002, 0x20002}), 2u) << "stereo";
  EXPECT_EQ(countOf({0x20003, 0x20003, 0x20003}, false), 3u) << "angles";
  EXPECT_EQ(countOf({0x80000000 | 0x20001, 0x40000000 | 0x20001}), 2u) << "flags beside the type";
}

TEST_F(JpegOddities, TheDensityIsThatOfJfif) {
  const Bytes plain = withoutSegment(jpegOf({}), "JFIF");
  const auto treeOf = [&](std::uint8_t unit) {
    const Bytes density = {1, 2, unit, 0, 118, 0, 59, 0, 0};
    return propertiesOf(withJpegSegment(plain, jpegSegment(0xE0, std::string_view{"JFIF\0", 5}, density)))
        .tree;
  };
  EXPECT_EQ(treeOf(1).at("DPIWidth"), Value(118.0));
  EXPECT_EQ(treeOf(1).at("DPIHeight"), Value(59.0));
  EXPECT_NEAR(*treeOf(2).at("DPIWidth").number(), 299.72, 1e-9);
  EXPECT_EQ(treeOf(0).count("DPIWidth"), 0u);
  const Dictionary group = *treeOf(1).at("{JFIF}").get<Dictionary>();
  EXPECT_EQ(group.at("XDensity"), Value(118));
  EXPECT_EQ(group.at("JFIFVersion"), Value(Array{1, 0, 2}));
}

}  // namespace
}  // namespace ostra::test
