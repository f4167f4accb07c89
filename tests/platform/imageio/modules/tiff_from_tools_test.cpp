#include <tuple>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using Words = std::vector<std::string>;
using Samples = std::vector<std::uint16_t>;

constexpr std::uint16_t kYcc = 6;

/// What ImageMagick and the library's own tools make.
class TiffByTools : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "tiffcp", "tiffset"}) OSTRA_NEEDS_PROGRAM(name);
  }
  std::string path(const std::string& name) const { return folder.path(name); }
  Bytes made(Words options, const std::string& size = "47x33") const {
    options.insert(options.begin(), {"convert", "-size", size, "-seed", "3", "plasma:tomato-steelblue"});
    options.push_back(path("a.tif"));
    run(options);
    return readFile(path("a.tif"));
  }
  Bytes copied(Words options) const {
    options.insert(options.begin(), "tiffcp");
    options.insert(options.end(), {path("a.tif"), path("b.tif")});
    run(options);
    return readFile(path("b.tif"));
  }
  TemporaryFolder folder;
};

class TiffKinds : public TiffByTools, public testing::WithParamInterface<std::tuple<Words, Words>> {};

TEST_P(TiffKinds, ReadAsImageMagickReadsThem) {
  Words options = std::get<0>(GetParam());
  const Words compression = std::get<1>(GetParam());
  options.insert(options.end(), compression.begin(), compression.end());
  const Bytes file = made(options);
  EXPECT_EQ(straightRgba16(decoded(file)), rgba16ByImageMagick(path("a.tif")));
}

const Words kOpaque8 = {"-depth", "8"}, kOpaque16 = {"-depth", "16"},
            kGray8 = {"-colorspace", "gray", "-depth", "8"},
            kGray16 = {"-colorspace", "gray", "-depth", "16"},
            kAlpha8 = {"-alpha", "set",    "-channel", "A",       "-fx",
                       "i/w",    "-depth", "8",        "-define", "tiff:alpha=unassociated"},
            kAlpha16 = {"-alpha", "set",    "-channel", "A",       "-fx",
                        "i/w",    "-depth", "16",       "-define", "tiff:alpha=unassociated"},
            kGrayAlpha = {"-colorspace", "gray", "-alpha", "set", "-channel", "A",
                          "-fx",         "i/w",  "-depth", "8",   "-define",  "tiff:alpha=unassociated"},
            kEntries = {"-colors", "200", "-type", "palette", "-depth", "8"},
            kFewEntries = {"-colors", "7", "-type", "palette"};

INSTANTIATE_TEST_SUITE_P(
    Deep, TiffKinds,
    testing::Combine(testing::Values(kOpaque8, kOpaque16, kGray8, kGray16, kAlpha8, kAlpha16, kGrayAlpha,
                                     kEntries, kFewEntries),
                     testing::Values(Words{"-compress", "None"}, Words{"-compress", "LZW"},
                                     Words{"-compress", "Zip"}, Words{"-compress", "RLE"},
                                     Words{"-compress", "LZMA"}, Words{"-compress", "None", "-endian", "MSB"},
                                     Words{"-compress", "None", "-interlace", "plane"})));
INSTANTIATE_TEST_SUITE_P(
    Bilevel, TiffKinds,
    testing::Combine(testing::Values(Words{"-monochrome"}),
                     testing::Values(Words{"-compress", "None"}, Words{"-compress", "Group4"},
                                     Words{"-compress", "Fax"}, Words{"-compress", "LZW"})));

class TiffLayouts : public TiffByTools, public testing::WithParamInterface<std::tuple<Words, Words>> {};

TEST_P(TiffLayouts, HoldTheSamePixels) {
  const Samples expected = straightRgba16(decoded(made(std::get<0>(GetParam()))));
  EXPECT_EQ(straightRgba16(decoded(copied(std::get<1>(GetParam())))), expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, TiffLayouts,
    testing::Combine(testing::Values(kOpaque8, kOpaque16, kGray16, kAlpha8),
                     testing::Values(Words{"-c", "none", "-r", "7"}, Words{"-c", "lzw:2", "-r", "1"},
                                     Words{"-c", "zip:2"}, Words{"-c", "zip:2", "-B"}, Words{"-c", "lzma"},
                                     Words{"-c", "zstd:2"}, Words{"-c", "lerc"}, Words{"-c", "packbits"},
                                     Words{"-c", "none", "-t", "-w", "16", "-l", "32"},
                                     Words{"-c", "none", "-8"}, Words{"-c", "zip:2", "-8", "-B", "-t"},
                                     Words{"-c", "none", "-f", "lsb2msb"})));

// The tool parts the planes of bytes only.
INSTANTIATE_TEST_SUITE_P(
    InPlanes, TiffLayouts,
    testing::Combine(testing::Values(kOpaque8, kAlpha8),
                     testing::Values(Words{"-c", "zip:2", "-t", "-w", "32", "-l", "16", "-p", "separate"},
                                     Words{"-c", "lzw:2", "-p", "separate", "-r", "5"})));

TEST_F(TiffByTools, OfStripsThatAreLargeAreReadByTheRow) {
  made({"-depth", "16"}, "2000x1500");  // 18 MB
  const Samples expected = rgba16ByImageMagick(path("a.tif"));
  for (const Words& packing : {Words{"-c", "none"}, Words{"-c", "zip:2"}, Words{"-c", "lzw"}}) {
    Words options = packing;
    options.insert(options.end(), {"-r", "1500"});
    EXPECT_TRUE(straightRgba16(decoded(copied(options))) == expected) << packing[1];
  }
}

TEST_F(TiffByTools, InJpegGiveRgb) {
  for (const char* sampling : {"4:4:4", "4:2:0"}) {
    const Bytes file =
        made({"-depth", "8", "-compress", "JPEG", "-quality", "95", "-sampling-factor", sampling}, "64x48");
    const Samples mine = straightRgba16(decoded(file)), theirs = rgba16ByImageMagick(path("a.tif"));
    ASSERT_EQ(mine.size(), theirs.size());
    for (std::size_t i = 0; i < mine.size(); ++i) ASSERT_NEAR(mine[i], theirs[i], 3 * 257) << i;
  }
}

TEST_F(TiffByTools, InWebpAreRead) {
  made({"-depth", "8"});
  run({"tiffcp", "-c", "webp:100", path("a.tif"), path("b.tif")});
  EXPECT_EQ(straightRgba16(decoded(readFile(path("b.tif")))), rgba16ByImageMagick(path("b.tif")));
}

TEST_F(TiffByTools, TellWhatTheyAre) {
  const Dictionary tree = propertiesOf(made({"-depth", "16", "-alpha", "set", "-compress", "LZW", "-density",
                                             "300", "-units", "PixelsPerInch"}))
                              .tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(16));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("HasAlpha"), Value(true));
  EXPECT_EQ(tree.at("DPIWidth"), Value(300.0));
  EXPECT_EQ(tree.at("{TIFF}").get<Dictionary>()->at("Compression"), Value(5));
}

TEST_F(TiffByTools, CarryTheirProfileAndTheirBlocks) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const CGColorSpaceRef p3 = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
  writeFile(path("p3.icc"), p3->iccData());
  made(kOpaque8);
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", "-Orientation#=6", "-ExposureTime=1/60",
       "-XMP-dc:Title=T", "-IPTC:Headline=H", "-GPSLatitude=1.5", "-GPSLatitudeRef=N",
       "-icc_profile<=" + path("p3.icc"), path("a.tif")});
  for (const Words& packing : {Words{"-B"}, Words{"-L"}}) {
    // The tool drops Exif; its own writing keeps the order.
    copied(packing);
    run({"exiftool", "-q", "-overwrite_original", "-tagsfromfile", path("a.tif"), "-all:all", "-icc_profile",
         path("b.tif")});
    const Bytes file = readFile(path("b.tif"));
    EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(file).profile));
    const Properties properties = propertiesOf(file);
    EXPECT_EQ(properties.tree.at("Orientation"), Value(6));
    EXPECT_EQ(properties.tree.at("ProfileName"), Value("Display P3"));
    EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("N"));
    EXPECT_EQ(properties.tree.at("{Exif}").get<Dictionary>()->at("ExposureTime"), Value(1.0 / 60));
    EXPECT_EQ(properties.tree.at("{GPS}").get<Dictionary>()->at("Latitude"), Value(1.5));
    EXPECT_EQ(properties.tree.at("{IPTC}").get<Dictionary>()->at("Headline"), Value("H"));
    EXPECT_FALSE(properties.carrier->xmp.empty());
  }
}

// What cameras of the nineties wrote: a whole JPEG beside the entries.
TEST_F(TiffByTools, OfOldJpegAreRead) {
  const TiffBuilder builder;
  const Bytes jpeg = madeByImageMagick({"-size", "48x32", "-seed", "3", "plasma:tomato-steelblue", "-quality",
                                        "95", "-sampling-factor", "4:4:4"},
                                       "jpg");
  auto picture = with(with(builder.picture(48, 32, 8, 3, kYcc, jpeg), builder.shorts(259, {6})),
                      builder.shorts(530, {1, 1}));
  for (const auto& entry :
       {builder.longs(513, {0}), builder.longs(514, {static_cast<std::uint32_t>(jpeg.size())})})
    picture = with(picture, entry);
  Bytes file = builder.build({picture});
  const auto at = static_cast<std::uint32_t>(file.size() - jpeg.size());
  picture = with(picture, builder.longs(513, {at}));
  file = builder.build({picture});
  writeFile(path("a.jpg"), jpeg);
  const Samples mine = straightRgba16(decoded(file)), theirs = rgba16ByImageMagick(path("a.jpg"));
  ASSERT_EQ(mine.size(), theirs.size());
  for (std::size_t i = 0; i < mine.size(); ++i) ASSERT_NEAR(mine[i], theirs[i], 4 * 257) << i;
}

}  // namespace
}  // namespace ostra::test
