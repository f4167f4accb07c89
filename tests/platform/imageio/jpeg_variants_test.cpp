#include <gtest/gtest.h>

#include "tests/platform/imageio/jpeg_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

class JpegVariants : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("cjpeg");
    OSTRA_NEEDS_PROGRAM("djpeg");
    OSTRA_NEEDS_PROGRAM("convert");
  }

  static bool has(const Bytes& file, std::string_view head) { return positionOf(head, file) < file.size(); }
  static Bytes bare(Bytes file) {
    for (const std::string_view head : {std::string_view{"JFIF\0", 5}, std::string_view{"Adobe"}})
      if (has(file, head)) file = withoutSegment(std::move(file), head);
    return file;
  }
  static Bytes adobe(int transform) {
    return jpegSegment(0xEE, "Adobe", Bytes{0, 100, 0, 0, 0, 0, static_cast<std::uint8_t>(transform)});
  }
  static Bytes jfif() {
    return jpegSegment(0xE0, std::string_view{"JFIF\0", 5}, Bytes{1, 1, 0, 0, 1, 0, 1, 0, 0});
  }
  /// Every mark of every program before the pixels: none, JFIF, Adobe with each transform, both in both
  /// orders.
  static std::vector<Bytes> allMarks() {
    std::vector<Bytes> marks = {{}, jfif()};
    for (const int transform : {0, 1, 2, 77}) {
      marks.push_back(adobe(transform));
      marks.push_back(joined({jfif(), adobe(transform)}));
      marks.push_back(joined({adobe(transform), jfif()}));
    }
    return marks;
  }
};

TEST_F(JpegVariants, WithJfifAndAdobeMarksInEveryCombinationAreReadAsDjpegReadsThem) {
  std::size_t different = 0;
  for (const Bytes& still : {bare(jpegOf({})), bare(jpegOf({"-rgb"})), bare(jpegOf({"-grayscale"}, 1))}) {
    const Bytes plain = colourSamples(decoded(still));
    for (const Bytes& marks : allMarks()) {
      const Bytes file = marks.empty() ? still : withJpegSegment(still, marks);
      const Bytes ours = colourSamples(decoded(file));
      EXPECT_EQ(ours, samplesByDjpeg(file));
      if (ours != plain) ++different;
    }
  }
  EXPECT_GT(different, 0u) << "the marks mean nothing";
}

TEST_F(JpegVariants, OfInksWithEveryCombinationOfMarksAreReadAsImageMagickReadsThem) {
  const TemporaryFolder folder;
  writeFile(folder.path("raw"), softSamples(kWidth, kHeight, 4, 8));
  const Bytes still = bare(madeByImageMagick(
      {"-size", "47x33", "-depth", "8", "cmyk:" + folder.path("raw"), "-quality", "98"}, "jpg"));
  for (const Bytes& marks : allMarks()) {
    if (!has(marks, "Adobe")) continue;  // there ImageMagick inverts, and others do not
    const Bytes file = withJpegSegment(still, marks);
    const Pixels pixels = decoded(file);
    ASSERT_EQ(pixels.layout.model, CGColorSpaceModel::cmyk);
    writeFile(folder.path("a.jpg"), file);
    run({"convert", folder.path("a.jpg"), "-depth", "8", "cmyk:" + folder.path("out")});
    EXPECT_EQ(Bytes(pixels.bytes.view.begin(), pixels.bytes.view.end()), readFile(folder.path("out")));
  }
}

TEST_F(JpegVariants, OfUnusualSamplingAreReadAsDjpegReadsThemOrRefusedAsItRefusesThem) {
  std::size_t read = 0;
  for (const char* sampling :
       {"3x1", "1x3", "4x1", "1x4", "4x2", "2x4", "3x2", "2x2,2x1,1x2", "1x1,2x2,1x1", "1x1,2x1,1x2",
        "2x2,2x2,1x1", "2x1,1x2,1x1", "4x1,2x1,1x1", "3x2,1x2,1x1", "2x2,1x1,2x2"})
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{}, {"-progressive"}, {"-restart", "2B"}}) {
      std::vector<std::string> words = {"-sample", sampling};
      words.insert(words.end(), more.begin(), more.end());
      const Bytes file = jpegOf(words);
      Bytes theirs;
      try {
        theirs = samplesByDjpeg(file);
      } catch (const std::exception&) {
        EXPECT_TRUE(faultOf(decodeBytes(file))) << sampling;
        continue;
      }
      EXPECT_EQ(colourSamples(decoded(file)), theirs) << sampling;
      ++read;
    }
  EXPECT_GE(read, 30u);
}

TEST_F(JpegVariants, WithRestartMarkersAreReadAndAMissingOneIsRefused) {
  for (const char* interval : {"1B", "3B", "1", "2"}) {
    const Bytes file = jpegOf({"-restart", interval});
    EXPECT_EQ(colourSamples(decoded(file)), samplesByDjpeg(file)) << interval;
  }
  Bytes lost = jpegOf({"-restart", "1"});
  const std::size_t marker = positionOf("\xFF\xD0", lost);
  ASSERT_LT(marker, lost.size());
  lost[marker + 1] = 0xD3;  // out of turn
  EXPECT_EQ(faultOf(decodeBytes(lost)), Fault{FaultKind::damaged});
}

TEST_F(JpegVariants, OfProcessesThatTheLibraryHasNotAreRefused) {
  const Bytes file = jpegOf({});
  const std::size_t frame = positionOf("\xFF\xC0", file);
  constexpr std::uint8_t kLossless = 0xC3, kHierarchical = 0xC5, kArithmeticLossless = 0xCB;
  for (const std::uint8_t process : {kLossless, kHierarchical, kArithmeticLossless}) {
    Bytes other = file;
    other[frame + 1] = process;
    EXPECT_EQ(faultOf(decodeBytes(other)), Fault{FaultKind::damaged}) << int{process};
  }
  for (const int bits : {2, 12, 16}) {
    Bytes other = file;
    other[frame + 4] = static_cast<std::uint8_t>(bits);
    EXPECT_EQ(faultOf(decodeBytes(other)), Fault{FaultKind::damaged}) << bits;
  }
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"-arithmetic"}, {"-arithmetic", "-progressive"}})
    EXPECT_EQ(colourSamples(decoded(jpegOf(words))), samplesByDjpeg(jpegOf(words)));
}

// The arithmetic decoder of the library does not warn of what is missing.
TEST_F(JpegVariants, OfArithmeticCodingAreRefusedWhereTheyAreCutOff) {
  const Bytes file = jpegOf({"-arithmetic"});
  const ByteView whole(file);
  for (std::size_t lost = 1; lost < 200; ++lost)
    EXPECT_EQ(faultOf(decodeBytes(whole.first(whole.size() - lost))), Fault{FaultKind::damaged}) << lost;
}

TEST_F(JpegVariants, AProfileInAsManySegmentsAsThereMayBeIsWhole) {
  const ByteView view = CGColorSpace::createWithName(kCGColorSpaceDisplayP3)->iccData();
  const Bytes profile(view.begin(), view.end());
  constexpr std::size_t kParts = 255;
  std::vector<Bytes> segments;
  for (std::size_t i = 0; i < kParts; ++i) {
    const std::size_t from = i * profile.size() / kParts, to = (i + 1) * profile.size() / kParts;
    Bytes part = {static_cast<std::uint8_t>(i + 1), kParts};
    part.insert(part.end(), profile.begin() + static_cast<std::ptrdiff_t>(from),
                profile.begin() + static_cast<std::ptrdiff_t>(to));
    segments.push_back(jpegSegment(0xE2, std::string_view{"ICC_PROFILE\0", 12}, part));
  }
  Bytes all;
  for (std::size_t i = 0; i < kParts; ++i) {
    const Bytes& segment = segments[i * 7 % kParts];  // every one, in another order
    all.insert(all.end(), segment.begin(), segment.end());
  }
  const auto record = decoded(withJpegSegment(jpegOf({}), all)).profile;
  ASSERT_TRUE(std::holds_alternative<IccProfile>(record));
  EXPECT_EQ(std::get<IccProfile>(record).bytes, profile);
}

TEST_F(JpegVariants, ASegmentWhoseLengthDoesNotCountItselfIsEmpty) {
  const Bytes file = jpegOf({});
  const Bytes odd = withJpegSegment(file, Bytes{0xFF, 0xFE, 0, 0});
  EXPECT_EQ(colourSamples(decoded(odd)), colourSamples(decoded(file)));
  EXPECT_EQ(samplesByDjpeg(odd), samplesByDjpeg(file));
}

}  // namespace
}  // namespace ostra::test
