#include <cstdlib>
#include <map>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/jpeg2000_files.h"

namespace ostra {
namespace {

using namespace test;

CGImageAlphaInfo alphaOf(const Pixels& pixels) {
  return static_cast<CGImageAlphaInfo>(pixels.layout.bitmapInfo & kCGBitmapAlphaInfoMask);
}

int largestDifference(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b) {
  int largest = a.size() == b.size() ? 0 : 65536;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    largest = std::max(largest, std::abs(int{a[i]} - int{b[i]}));
  return largest;
}

const std::map<std::string, std::vector<std::string>> kDrawings = {
    {"gray8", {"-colorspace", "gray", "-depth", "8"}},
    {"gray16", {"-colorspace", "gray", "-depth", "16"}},
    {"grayWithAlpha", {"-colorspace", "gray", "-depth", "8", "-alpha", "set", "-channel", "A", "-fx", "i/w"}},
    {"rgb8", {"-depth", "8"}},
    {"rgb16", {"-depth", "16"}},
    {"rgba8", {"-depth", "8", "-alpha", "set", "-channel", "A", "-fx", "i/w"}},
    {"rgba16", {"-depth", "16", "-alpha", "set", "-channel", "A", "-fx", "i/w"}}};

TEST_F(Jpeg2000, GivesThePixelsThatItsOwnToolReads) {
  for (const auto& [kind, drawing] : kDrawings) {
    for (const char* name : {"a.jp2", "a.j2k"}) {
      const Bytes picture = made(drawing, {}, name);
      EXPECT_EQ(asRgba16(decoded(picture)), byItsOwnTool(picture, std::string(name).substr(2))) << kind;
    }
  }
}

TEST_F(Jpeg2000, GivesThePixelsOfEveryWayToPackThem) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{"-I", "-r", "10"},
                                                  {"-r", "20,5,1"},
                                                  {"-t", "16,13", "-n", "2"},
                                                  {"-d", "3,5"},
                                                  {"-t", "16,13", "-T", "1,2", "-d", "3,5", "-n", "1"},
                                                  {"-p", "RPCL", "-n", "2", "-c", "[32,32],[16,16]"},
                                                  {"-TP", "R", "-n", "4"},
                                                  {"-SOP", "-EPH"},
                                                  {"-M", "63"},
                                                  {"-b", "4,4", "-n", "1"},
                                                  {"-mct", "0"}}) {
    const Bytes picture = made({"-depth", "8"}, options);
    EXPECT_EQ(asRgba16(decoded(picture)), byItsOwnTool(picture)) << options[0] << options[1];
  }
}

TEST_F(Jpeg2000, OddSizesAreWhole) {
  for (const char* size : {"1x1!", "1x7!", "9x1!", "47x33!"}) {
    const Bytes picture = made({"-resize", size, "-depth", "8"}, {"-n", "1"});
    EXPECT_EQ(asRgba16(decoded(picture)), byItsOwnTool(picture)) << size;
  }
}

TEST_F(Jpeg2000, EveryDepthIsScaledExactly) {
  for (const unsigned bits : {1u, 2u, 4u, 5u, 7u, 8u, 9u, 10u, 12u, 15u, 16u}) {
    for (const bool isSigned : {false, true}) {
      // All values of few bits, and the ends of many.
      const unsigned count = 1u << bits;
      Bytes samples;
      std::vector<std::uint16_t> expected;
      for (unsigned i = 0; i < 32 * 8; ++i) {
        const unsigned value = i < 128 ? i % count : (count - 1 - (i * 37) % count);
        const unsigned stored = isSigned ? value - count / 2 : value;
        if (bits > 8) samples.push_back(static_cast<std::uint8_t>(stored >> 8));
        samples.push_back(static_cast<std::uint8_t>(stored));
        const unsigned most = bits > 8 ? 65535 : 255;
        const std::uint64_t scaled = (2 * std::uint64_t{value} * most + count - 1) / (2 * (count - 1));
        for (int c = 0; c < 3; ++c)
          expected.push_back(static_cast<std::uint16_t>(bits > 8 ? scaled : scaled * 257));
        expected.push_back(65535);
      }
      const Bytes picture =
          ofSamples(samples, "32,8,1," + std::to_string(bits) + (isSigned ? ",s" : ",u"), {"-n", "1"});
      const Pixels pixels = decoded(picture);
      EXPECT_EQ(pixels.layout.model, CGColorSpaceModel::monochrome);
      EXPECT_EQ(pixels.layout.bitsPerComponent, bits > 8 ? 16 : 8);
      EXPECT_EQ(asRgba16(pixels), expected) << bits << isSigned;
      EXPECT_EQ(propertiesOf(picture).tree.at("Depth"), Value(std::int64_t{bits}));
    }
  }
}

TEST_F(Jpeg2000, ASampleOfMoreThanSixteenBitsIsRefused) {
  Bytes picture = ofSamples(Bytes(64), "8,8,1,8,u", {"-n", "1"});
  constexpr std::size_t kDepth = 2 + 2 + 38;
  ASSERT_EQ(picture[kDepth], 7);
  picture[kDepth] = 16;
  EXPECT_TRUE(faultOf(decodeBytes(picture)));
}

TEST_F(Jpeg2000, DifferencesOfColourAreReadAtTheirOwnSize) {
  for (const char* sampling : {"1x1:1x1:1x1", "1x1:2x1:2x1", "1x1:2x2:2x2"}) {
    const bool wide = std::string(sampling)[4] == '2', high = std::string(sampling)[6] == '2';
    const std::size_t coarse = (wide ? 24 : 48) * (high ? 16 : 32);
    const Bytes samples = joined(
        {softSamples(48, 32, 1, 8), softSamples(wide ? 24 : 48, high ? 16 : 32, 1, 8), Bytes(coarse, 90)});
    const Bytes stream = ofSamples(samples, "48,32,3,8,u@" + std::string(sampling), {"-mct", "0"});
    const Bytes picture = jp2File({jp2Header(48, 32, 3, 8), enumeratedColour(18)}, stream);
    const Pixels pixels = decoded(picture);
    // The tool's own conversion cuts fractions off where ours rounds them.
    EXPECT_LE(largestDifference(asRgba16(pixels), byItsOwnTool(picture)), 2 * 257) << sampling;
    EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceSRGB);
    // A bare codestream tells it by its sampling alone.
    if (wide) {
      EXPECT_EQ(asRgba16(decoded(stream)), asRgba16(pixels)) << sampling;
    }
  }
}

TEST_F(Jpeg2000, APictureWhoseCornerIsOddRepeatsTheNearestDifference) {
  const Bytes samples = joined({Bytes(48 * 32, 128), Bytes(24 * 16, 128), Bytes(24 * 16, 128)});
  const Bytes stream = ofSamples(samples, "48,32,3,8,u@1x1:2x2:2x2", {"-mct", "0", "-d", "3,1"});
  const std::vector<std::uint16_t> pixels = asRgba16(decoded(stream));
  ASSERT_EQ(pixels.size(), std::size_t{48} * 32 * 4);
  for (std::size_t i = 0; i < pixels.size(); i += 4)
    ASSERT_EQ(pixels[i] | pixels[i + 1] | pixels[i + 2], 128 * 257) << i;
}

TEST_F(Jpeg2000, APaletteIsLookedUp) {
  Bytes indices, expectedColours;
  for (unsigned i = 0; i < 48; ++i) indices.push_back(static_cast<std::uint8_t>(i % 3));
  const Bytes stream = ofSamples(indices, "8,6,1,8,u", {"-n", "1"});
  const Bytes palette =
      box("pclr", joined({big16({3}), Bytes{3, 7, 7, 7, 10, 20, 30, 40, 50, 60, 255, 0, 1}}));
  const Bytes mapping =
      box("cmap", joined({big16({0}), Bytes{1, 0}, big16({0}), Bytes{1, 1}, big16({0}), Bytes{1, 2}}));
  const Bytes picture = jp2File({jp2Header(8, 6, 1, 8), palette, mapping, enumeratedColour(16)}, stream);
  const auto pixels = asRgba16(decoded(picture));
  EXPECT_EQ(pixels, byItsOwnTool(picture));
  EXPECT_EQ(pixels[4], 40 * 257);
  EXPECT_EQ(propertiesOf(picture).tree.at("IsIndexed"), Value(true));
  // A sample that is no entry is a damaged picture.
  Bytes outside = indices;
  outside[7] = 3;
  EXPECT_TRUE(faultOf(decodeBytes(jp2File({jp2Header(8, 6, 1, 8), palette, mapping, enumeratedColour(16)},
                                          ofSamples(outside, "8,6,1,8,u", {"-n", "1"})))));
  // So is a palette without a mapping, and one that maps a column that is not there.
  EXPECT_TRUE(faultOf(decodeBytes(jp2File({jp2Header(8, 6, 1, 8), palette, enumeratedColour(16)}, stream))));
  EXPECT_TRUE(faultOf(decodeBytes(jp2File(
      {jp2Header(8, 6, 1, 8), palette, box("cmap", joined({big16({0}), Bytes{1, 3}})), enumeratedColour(17)},
      stream))));
}

class Jpeg2000Channels : public Jpeg2000 {
 protected:
  void SetUp() override {
    Jpeg2000::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    for (const unsigned value : {10u, 20u, 30u, 40u})
      samples.insert(samples.end(), 64, static_cast<std::uint8_t>(value));
    stream = ofSamples(samples, "8,8,4,8,u", {"-n", "1", "-mct", "0"});
  }
  Bytes withDefinitions(std::initializer_list<unsigned> numbers) const {
    return jp2File({jp2Header(8, 8, 4, 8), enumeratedColour(16), box("cdef", big16(numbers))}, stream);
  }
  static std::vector<unsigned> firstPixel(const Bytes& picture) {
    const Pixels pixels = decoded(picture);
    return {pixels.bytes.view.begin(), pixels.bytes.view.begin() + 4};
  }

  Bytes samples, stream;
};

TEST_F(Jpeg2000Channels, AreTakenInTheOrderThatIsTold) {
  const Bytes picture = withDefinitions({4, 0, 0, 3, 1, 0, 2, 2, 0, 1, 3, 1, 0});
  EXPECT_EQ(firstPixel(picture), (std::vector<unsigned>{30, 20, 10, 40}));
  EXPECT_EQ(alphaOf(decoded(picture)), CGImageAlphaInfo::last);
  EXPECT_EQ(propertiesOf(picture).tree.at("HasAlpha"), Value(true));
}

TEST_F(Jpeg2000Channels, OpacityMayBeMultipliedIn) {
  const Bytes picture = withDefinitions({4, 0, 0, 1, 1, 0, 2, 2, 0, 3, 3, 2, 0});
  EXPECT_EQ(alphaOf(decoded(picture)), CGImageAlphaInfo::premultipliedLast);
  EXPECT_EQ(firstPixel(picture), (std::vector<unsigned>{10, 20, 30, 40}));
}

TEST_F(Jpeg2000Channels, OneThatIsNothingKnownIsLeftOut) {
  EXPECT_EQ(alphaOf(decoded(withDefinitions({4, 0, 0, 1, 1, 0, 2, 2, 0, 3, 3, 65535, 65535}))),
            CGImageAlphaInfo::noneSkipLast);
}

TEST_F(Jpeg2000Channels, AFourthOneThatNothingDefinesIsOpacity) {
  EXPECT_EQ(alphaOf(decoded(jp2File({jp2Header(8, 8, 4, 8), enumeratedColour(16)}, stream))),
            CGImageAlphaInfo::last);
}

TEST_F(Jpeg2000Channels, ThatLackAColourAreRefused) {
  EXPECT_TRUE(faultOf(decodeBytes(withDefinitions({3, 0, 0, 1, 1, 0, 2, 2, 1, 0}))));
  EXPECT_TRUE(faultOf(decodeBytes(withDefinitions({4, 0, 0, 1, 1, 0, 2, 9, 0, 3, 3, 1, 0}))));
}

TEST_F(Jpeg2000Channels, InksAreNotInverted) {
  const Bytes picture = jp2File({jp2Header(8, 8, 4, 8), enumeratedColour(12)}, stream);
  EXPECT_EQ(decoded(picture).layout.model, CGColorSpaceModel::cmyk);
  EXPECT_EQ(firstPixel(picture), (std::vector<unsigned>{10, 20, 30, 40}));
}

TEST_F(Jpeg2000, ColoursAreWhatTheFileTells) {
  const Bytes gray = ofSamples(Bytes(64, 9), "8,8,1,8,u", {"-n", "1"});
  const Bytes rgb = ofSamples(Bytes(192, 9), "8,8,3,8,u", {"-n", "1"});
  const auto profileOf = [&](const Bytes& colour) {
    return decoded(jp2File({jp2Header(8, 8, 3, 8), colour}, rgb)).profile;
  };
  EXPECT_EQ(std::get<NamedSpace>(profileOf(enumeratedColour(16))).name, kCGColorSpaceSRGB);
  EXPECT_EQ(std::get<NamedSpace>(profileOf(enumeratedColour(21))).name, kCGColorSpaceROMMRGB);
  const auto grayProfile = decoded(jp2File({jp2Header(8, 8, 1, 8), enumeratedColour(17)}, gray)).profile;
  EXPECT_EQ(std::get<NamedSpace>(grayProfile).name, kCGColorSpaceGenericGrayGamma2_2);
  EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(rgb).profile));

  const ByteView p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3)->iccData();
  for (const unsigned method : {2u, 3u}) {
    const ProfileRecord profile = profileOf(profiledColour(method, p3));
    const Bytes& bytes = std::get<IccProfile>(profile).bytes;
    EXPECT_EQ(bytes, Bytes(p3.begin(), p3.end()));
  }
  // Of several the one that takes precedence, else the first that is known here.
  EXPECT_TRUE(std::holds_alternative<IccProfile>(
      profileOf(joined({enumeratedColour(16), profiledColour(3, p3, 2)}))));
  EXPECT_TRUE(
      std::holds_alternative<NamedSpace>(profileOf(joined({enumeratedColour(16), profiledColour(3, p3)}))));
  EXPECT_TRUE(
      std::holds_alternative<IccProfile>(profileOf(joined({enumeratedColour(99), profiledColour(3, p3)}))));
  // A broken profile leaves the picture untagged.
  EXPECT_TRUE(std::holds_alternative<Untagged>(profileOf(profiledColour(2, p3.first(200)))));
}

TEST_F(Jpeg2000, ASpaceThatIsNotKnownHereIsRefused) {
  const Bytes rgb = ofSamples(Bytes(192, 9), "8,8,3,8,u", {"-n", "1"});
  for (const unsigned number : {0u, 1u, 14u, 20u, 24u, 99u})
    EXPECT_TRUE(faultOf(decodeBytes(jp2File({jp2Header(8, 8, 3, 8), enumeratedColour(number)}, rgb))))
        << number;
  Bytes lab(128);
  std::copy_n("Lab ", 4, lab.begin() + 16);
  EXPECT_TRUE(faultOf(decodeBytes(jp2File({jp2Header(8, 8, 3, 8), profiledColour(2, lab)}, rgb))));
}

TEST_F(Jpeg2000, CarriesMetadataAsExiftoolWritesIt) {
  made({"-depth", "8"}, {});
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-Orientation#=6", "-XMP-dc:Title=T",
       "-IPTC:Headline=H", folder.path("a.jp2")});
  const Properties properties = propertiesOf(file("a.jp2"));
  EXPECT_EQ(properties.tree.at("Orientation"), Value(6));
  EXPECT_EQ(properties.tree.at("PixelWidth"), Value(47));
  ASSERT_NE(properties.carrier, nullptr);
  EXPECT_FALSE(properties.carrier->exif.empty());
  EXPECT_FALSE(properties.carrier->xmp.empty());
  EXPECT_FALSE(properties.carrier->iptc.empty());
}

TEST_F(Jpeg2000, TellsItsDensity) {
  const Bytes stream = ofSamples(Bytes(64, 9), "8,8,1,8,u", {"-n", "1"});
  const auto widthOf = [&](const Bytes& content) -> double {
    const Bytes picture =
        jp2File({jp2Header(8, 8, 1, 8), enumeratedColour(17), box("res ", content)}, stream);
    const Dictionary tree = propertiesOf(picture).tree;
    const auto found = tree.find("DPIWidth");
    return found == tree.end() ? 0 : *found->second.get<double>();
  };
  const Bytes taken = box("resc", joined({big16({300, 254, 3780, 1}), Bytes{4, 0}}));
  const Bytes shown = box("resd", joined({big16({300, 254, 72, 254}), Bytes{4, 4}}));
  EXPECT_EQ(widthOf(taken), 96);
  EXPECT_EQ(widthOf(joined({taken, shown})), 72);
  EXPECT_EQ(widthOf(box("resd", joined({big16({300, 254, 72, 0}), Bytes{4, 4}}))), 0);
}

TEST_F(Jpeg2000, CodestreamsAreCounted) {
  const Bytes stream = ofSamples(Bytes(64, 9), "8,8,1,8,u", {"-n", "1"});
  const Bytes picture = jp2File({jp2Header(8, 8, 1, 8), enumeratedColour(17)}, stream, box("jp2c", stream));
  auto opened = openBytes(picture);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().count, 2u);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(opened)->opened().type, "public.jpeg-2000");
}

}  // namespace
}  // namespace ostra
