#include <algorithm>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/modules/tiff/tiff_writer.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/metadata/exif_builder.h"
#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Lines = std::vector<std::string>;
using Words = std::vector<std::string>;

constexpr const char* kType = "public.tiff";

struct Form {
  CGColorSpaceModel model;
  unsigned bits;
  CGImageAlphaInfo alpha;
};

unsigned componentsOf(const Form& form) {
  const unsigned colours = form.model == CGColorSpaceModel::monochrome ? 1
                           : form.model == CGColorSpaceModel::rgb      ? 3
                                                                       : 4;
  return colours + (form.alpha == CGImageAlphaInfo::none ? 0 : 1);
}

Pixels pictureOf(const Form& form, std::uint32_t width, std::uint32_t height) {
  return pixelsOf(softSamples(width, height, componentsOf(form), form.bits), width, height, form.model,
                  form.bits, form.alpha);
}

Properties asking(std::int64_t compression) {
  Properties properties;
  properties.tree.emplace("{TIFF}", Dictionary{{"Compression", Value(compression)}});
  return properties;
}

std::string toldByTiffinfo(const Bytes& file) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.tif"), file);
  const ProgramResult result = runProgram({"tiffinfo", "-D", folder.path("a.tif")});
  EXPECT_EQ(result.status, 0) << result.errors;
  return result.output;
}

std::vector<std::uint16_t> byImageMagick(const Bytes& file) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.tif"), file);
  return rgba16ByImageMagick(folder.path("a.tif"));
}

const std::vector<Form> kForms = {{CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::none},
                                  {CGColorSpaceModel::monochrome, 16, CGImageAlphaInfo::none},
                                  {CGColorSpaceModel::monochrome, 8, CGImageAlphaInfo::last},
                                  {CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none},
                                  {CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::noneSkipLast},
                                  {CGColorSpaceModel::rgb, 16, CGImageAlphaInfo::noneSkipLast},
                                  {CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::last},
                                  {CGColorSpaceModel::rgb, 16, CGImageAlphaInfo::last}};

class TiffWriting : public testing::TestWithParam<Form> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("tiffinfo");
  }
};

TEST_P(TiffWriting, IsReadBackWithoutAnyDifferenceByUsAndByImageMagick) {
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> sizes = {{1, 1}, {1, 7}, {47, 33}, {700, 650}};
  for (const auto& [width, height] : sizes) {
    const Pixels pixels = pictureOf(GetParam(), width, height);
    const Bytes file = encoded(kType, pixels);
    const auto expected = straightRgba16(pixels);
    EXPECT_TRUE(straightRgba16(decoded(file)) == expected) << width;
    EXPECT_TRUE(byImageMagick(file) == expected) << width;
  }
}

TEST_P(TiffWriting, KeepsDepthAndModelInEveryCompression) {
  for (const int compression : {1, 5, 8, 32773, 32946, 34925, 50000}) {
    const Pixels pixels = pictureOf(GetParam(), 47, 33);
    const Properties properties = asking(compression);
    const Bytes file = encoded(kType, pixels, &properties);
    const Pixels back = decoded(file);
    EXPECT_EQ(back.layout.bitsPerComponent, GetParam().bits);
    EXPECT_EQ(back.layout.model, GetParam().model);
    EXPECT_EQ(straightRgba16(back), straightRgba16(pixels));
    EXPECT_EQ(propertiesOf(file).tree.at("{TIFF}").get<Dictionary>()->at("Compression"), Value(compression));
    EXPECT_THAT(toldByTiffinfo(file), Not(HasSubstr("Warning"))) << compression;
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, TiffWriting, testing::ValuesIn(kForms));

TEST(TiffWritten, InkStaysInk) {
  OSTRA_NEEDS_PROGRAM("tiffinfo");
  for (const unsigned bits : {8u, 16u}) {
    const Pixels pixels = pictureOf({CGColorSpaceModel::cmyk, bits, CGImageAlphaInfo::none}, 47, 33);
    const Bytes file = encoded(kType, pixels);
    const Pixels back = decoded(file);
    EXPECT_EQ(back.layout.model, CGColorSpaceModel::cmyk);
    EXPECT_TRUE(std::equal(back.bytes.view.begin(), back.bytes.view.end(), pixels.bytes.view.begin()));
    EXPECT_THAT(toldByTiffinfo(file), HasSubstr("separated"));
  }
}

TEST(TiffWritten, OfPremultipliedPixelsIsStraight) {
  const Pixels pixels = pixelsOf({50, 100, 25, 128, 0, 0, 0, 0}, 2, 1, CGColorSpaceModel::rgb, 8,
                                 CGImageAlphaInfo::premultipliedLast);
  const Pixels back = decoded(encoded(kType, pixels));
  EXPECT_EQ(back.layout.bitmapInfo, static_cast<CGBitmapInfo>(CGImageAlphaInfo::last));
  EXPECT_EQ(Bytes(back.bytes.view.begin(), back.bytes.view.end()), (Bytes{100, 199, 50, 128, 0, 0, 0, 0}));
}

TEST(TiffWritten, InsteadOfACompressionThatLosesSomethingTakesDeflate) {
  const Pixels pixels = pictureOf(kForms[4], 47, 33);
  for (const int compression : {0, 2, 4, 6, 7, 32909, 34676, 34887, 50001, 9999, -1, 70000}) {
    const Properties properties = asking(compression);
    const Bytes file = encoded(kType, pixels, &properties);
    EXPECT_EQ(propertiesOf(file).tree.at("{TIFF}").get<Dictionary>()->at("Compression"), Value(8))
        << compression;
    EXPECT_EQ(straightRgba16(decoded(file)), straightRgba16(pixels));
  }
}

TEST(TiffWritten, StoresDifferencesWhereTheyAreSmaller) {
  OSTRA_NEEDS_PROGRAM("tiffinfo");
  // Noise of four values has no neighbours to be predicted by.
  Bytes noise = randomBytes(60000);
  for (std::uint8_t& sample : noise) sample = static_cast<std::uint8_t>(sample % 4 * 60);
  const Form gray = kForms[0];
  const Pixels flat = pixelsOf(std::move(noise), 300, 200, gray.model, 8, gray.alpha),
               soft = pictureOf(gray, 300, 200);
  for (const int compression : {5, 8}) {
    const Properties properties = asking(compression);
    EXPECT_THAT(toldByTiffinfo(encoded(kType, soft, &properties)), HasSubstr("horizontal differencing"));
    EXPECT_THAT(toldByTiffinfo(encoded(kType, flat, &properties)), Not(HasSubstr("horizontal differencing")));
  }
}

TEST(TiffWritten, IsTheSameEveryTime) {
  const Pixels pixels = pictureOf(kForms[6], 300, 200);
  EXPECT_EQ(encoded(kType, pixels), encoded(kType, pixels));
}

TEST(TiffWritten, WithAProfileOfAnotherModelIsRefused) {
  Pixels pixels = pictureOf(kForms[0], 4, 4);
  pixels.profile = NamedSpace{std::string(kCGColorSpaceDisplayP3)};
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(kType, pixels, nullptr)));
}

TEST(TiffWritten, WithAMalformedExifBlockIsRefused) {
  Carrier carrier;
  carrier.exif = {'I', 'I', 42, 0, 255, 255, 0, 0};
  const Properties properties{{}, std::make_shared<const Carrier>(carrier)};
  const Pixels pixels = pictureOf(kForms[0], 4, 4);
  EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(kType, pixels, &properties)));
}

// Metadata.

// A rewrite as the engine does it.
Properties kept(const Bytes& file) {
  Properties properties = propertiesOf(file);
  for (const std::string_view key :
       {kCGImagePropertyPixelWidth, kCGImagePropertyPixelHeight, kCGImagePropertyDepth,
        kCGImagePropertyHasAlpha, kCGImagePropertyColorModel, kCGImagePropertyProfileName,
        kCGImagePropertyIsIndexed, kCGImagePropertyIsFloat})
    properties.remove(key);
  return properties;
}

Bytes rewritten(const Bytes& file) {
  const Properties properties = kept(file);
  return encoded(kType, decoded(file), &properties);
}

// Every tag that exiftool reads, less those of storage.
Lines tagsOf(const Bytes& file) {
  constexpr std::string_view kStorage[] = {"SubfileType",
                                           "ImageWidth",
                                           "ImageHeight",
                                           "BitsPerSample",
                                           "Compression",
                                           "FillOrder",
                                           "StripOffsets",
                                           "SamplesPerPixel",
                                           "RowsPerStrip",
                                           "StripByteCounts",
                                           "PlanarConfiguration",
                                           "Predictor",
                                           "PhotometricInterpretation",
                                           "ExtraSamples",
                                           "SampleFormat",
                                           "TileWidth",
                                           "TileLength",
                                           "TileOffsets",
                                           "TileByteCounts",
                                           "OldSubfileType",
                                           "WhitePoint",
                                           "PrimaryChromaticities"};
  const TemporaryFolder folder;
  writeFile(folder.path("a.tif"), file);
  std::istringstream text(run({"exiftool", "-a", "-u", "-G1", "-s", "-e", "-n", "--System:all", "--File:all",
                               "--ExifTool:all", "--Composite:all", folder.path("a.tif")}));
  Lines lines;
  for (std::string line; std::getline(text, line);) {
    const std::string name = line.substr(std::min<std::size_t>(line.find(']') + 1, line.size()));
    const std::size_t start = name.find_first_not_of(' ');
    const bool storage = std::any_of(std::begin(kStorage), std::end(kStorage), [&](std::string_view tag) {
      return line.starts_with("[IFD0]") && name.compare(start, tag.size() + 1, std::string(tag) + " ") == 0;
    });
    if (!storage) lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

class TiffMetadata : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "exiftool", "tiffinfo"}) OSTRA_NEEDS_PROGRAM(name);
  }
  Bytes plain(const Words& options = {}) const {
    Words words = {"convert", "-size",  "47x33", "-seed",   "3",
                   "plasma:", "-depth", "8",     "-endian", GetParam()};
    words.insert(words.end(), options.begin(), options.end());
    words.push_back(folder.path("a.tif"));
    run(words);
    return readFile(folder.path("a.tif"));
  }
  Bytes tagged(Words words, const Words& options = {}) const {
    plain(options);
    words.insert(words.begin(), {"exiftool", "-q", "-m", "-overwrite_original"});
    words.push_back(folder.path("a.tif"));
    run(words);
    return readFile(folder.path("a.tif"));
  }
  TemporaryFolder folder;
};

const Words kEverything = {"-Make=Nobody",
                           "-Model=Nothing",
                           "-Orientation#=6",
                           "-XResolution=299.5",
                           "-YResolution=300",
                           "-ResolutionUnit#=3",
                           "-Artist=Anna",
                           "-ImageDescription=\u00e4",
                           "-Copyright=C",
                           "-PageName=front",
                           "-XPTitle=\u00f6",
                           "-ExposureTime=1/60",
                           "-FNumber=2.8",
                           "-ISO=200",
                           "-DateTimeOriginal=2024:05:06 07:08:09",
                           "-UserComment=by hand",
                           "-LensModel=L",
                           "-GPSLatitude=48.5",
                           "-GPSLatitudeRef=N",
                           "-GPSAltitude=100.5",
                           "-InteropIndex=R98",
                           "-MakerNoteUnknownText=note-of-the-maker",
                           "-XMP-dc:Title=Tower",
                           "-XMP-dc:Subject=iron",
                           "-IPTC:Headline=A tower",
                           "-IPTC:Keywords=iron",
                           "-Photoshop:URL=http://example.org",
                           "-GeoTiffAsciiParams=WGS 84|",
                           "-Rating=3"};

TEST_P(TiffMetadata, ComeOutAsTheyWentIn) {
  const Bytes file = tagged(kEverything);
  const Lines before = tagsOf(file);
  EXPECT_GT(before.size(), 30u);
  const Bytes now = rewritten(file);
  EXPECT_EQ(tagsOf(now), before);
  EXPECT_EQ(now[0], file[0]) << "the order of bytes";
  EXPECT_EQ(tagsOf(rewritten(now)), before);
  EXPECT_THAT(toldByTiffinfo(now), Not(HasSubstr("Warning")));
  EXPECT_EQ(straightRgba16(decoded(now)), straightRgba16(decoded(file)));
}

// In a JPEG they would be lies, in another TIFF too.
TEST_P(TiffMetadata, DoNotHoldHowTheOldSamplesLay) {
  const TiffBuilder builder(std::string(GetParam()) == "MSB");
  auto page = builder.picture(2, 1, 8, 1, 1, {10, 20});
  const std::vector<std::uint16_t> storage = {256, 257, 258, 259, 262, 273, 277, 278, 279};
  const std::vector<std::uint16_t> others = {318, 320, 347, 529, 532, 700, 33723, 34377, 34675, 37724};
  for (const std::uint16_t tag : others) page = with(page, builder.bytes(tag, 1, Bytes{1, 2, 3, 4}));
  page = with(with(page, builder.bytes(285, 2, bytesOfText("front"))), builder.bytes(65123, 7, Bytes(9, 5)));
  page.below = {builder.picture(1, 1, 8, 1, 1, {99})};
  const Bytes file = builder.build({page, with(page, builder.longs(254, {1}))});
  const auto block = parseExif(propertiesOf(file).carrier->exif);
  ASSERT_TRUE(block);
  std::vector<std::uint16_t> tags;
  for (const ExifEntry& entry : block->ifds.front().entries) tags.push_back(entry.tag);
  EXPECT_EQ(tags, (std::vector<std::uint16_t>{285, 65123}));
  const Bytes now = rewritten(file);
  const auto written = parseExif(now);
  for (const std::uint16_t tag : storage) EXPECT_NE(written->ifds.front().find(tag), nullptr) << tag;
  for (const int tag : {318, 320, 330, 347, 529, 532, 34675, 37724})
    EXPECT_EQ(written->ifds.front().find(static_cast<std::uint16_t>(tag)), nullptr) << tag;
  EXPECT_NE(written->ifds.front().find(65123), nullptr);
}

TEST_P(TiffMetadata, OfOneWithoutAnyStayNone) {
  const Bytes file = plain({"-strip"});
  EXPECT_EQ(tagsOf(rewritten(file)), tagsOf(file));
}

TEST_P(TiffMetadata, AreTheSameInABigOne) {
  const Bytes file = tagged(kEverything);
  const Properties properties = kept(file);
  const auto answer = writeTiff(decoded(file), &properties, 0);
  const Bytes& big = std::get<Bytes>(answer);
  EXPECT_EQ(big[2] + big[3], 43);
  // The other program knows too little of such files to say it in the same words.
  EXPECT_EQ(kept(big).tree, properties.tree);
  EXPECT_THAT(toldByTiffinfo(big), AllOf(HasSubstr("Make: Nobody"), Not(HasSubstr("Warning"))));
  EXPECT_EQ(straightRgba16(decoded(big)), straightRgba16(decoded(file)));
  EXPECT_EQ(byImageMagick(big), straightRgba16(decoded(file)));
  // And back.
  const Bytes small = rewritten(big);
  EXPECT_EQ(small[2] + small[3], 42);
  EXPECT_EQ(tagsOf(small), tagsOf(file));
}

TEST_P(TiffMetadata, OfAMakerKeepTheirBytesAndTheirPlace) {
  const bool big = std::string(GetParam()) == "MSB";
  const Bytes block = cameraBlock(big), note = makerNoteOf(block);
  Pixels pixels = pictureOf(kForms[4], 20, 10);
  pixels.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
  Carrier carrier;
  carrier.exif = block;
  const Properties properties = readMetadata(carrier, {});
  const Bytes file = encoded(kType, pixels, &properties);
  const auto placeOf = [&](const Bytes& bytes) {
    return std::search(bytes.begin(), bytes.end(), note.begin(), note.end()) - bytes.begin();
  };
  EXPECT_EQ(placeOf(file), placeOf(block));
  const Bytes again = rewritten(rewritten(file));
  EXPECT_EQ(placeOf(again), placeOf(block));
  EXPECT_EQ(tagsOf(again), tagsOf(file));
  EXPECT_LT(again.size(), file.size() + 1000) << "a rewrite must not grow the file every time";
}

TEST_P(TiffMetadata, ThatAreEditedSayTheNewValues) {
  Properties properties = kept(tagged(kEverything));
  properties.tree.insert_or_assign("Orientation", 8);
  auto& tiff = *properties.tree.at("{TIFF}").get<Dictionary>();
  tiff.insert_or_assign("Make", "A longer name than before");
  tiff.erase("Artist");
  properties.remove("{GPS}");
  const Bytes now = encoded(kType, decoded(plain()), &properties);
  const Dictionary tree = propertiesOf(now).tree;
  EXPECT_EQ(tree.at("Orientation"), Value(8));
  EXPECT_EQ(tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("A longer name than before"));
  EXPECT_FALSE(tree.at("{TIFF}").get<Dictionary>()->contains("Artist"));
  EXPECT_FALSE(tree.contains("{GPS}"));
}

TEST_P(TiffMetadata, AProfileIsEmbeddedAndSaysTheSame) {
  for (const std::string_view name : {kCGColorSpaceSRGB, kCGColorSpaceDisplayP3}) {
    Pixels pixels = pictureOf(kForms[4], 20, 10);
    pixels.profile = NamedSpace{std::string(name)};
    const Properties properties = propertiesOf(encoded(kType, pixels));
    EXPECT_EQ(properties.tree.at("ProfileName"),
              Value(CGColorSpace::createWithName(name)->profileDescription()));
  }
}

TEST_P(TiffMetadata, ADensityThatOnlyTheTreeTellsIsWritten) {
  Properties properties;
  properties.tree.emplace("DPIWidth", 240.0);
  properties.tree.emplace("DPIHeight", 72.5);
  const Dictionary tree = propertiesOf(encoded(kType, pictureOf(kForms[0], 4, 4), &properties)).tree;
  EXPECT_EQ(tree.at("DPIWidth"), Value(240.0));
  EXPECT_EQ(tree.at("DPIHeight"), Value(72.5));
}

INSTANTIATE_TEST_SUITE_P(Orders, TiffMetadata, testing::Values("LSB", "MSB"));

}  // namespace
}  // namespace ostra::test
