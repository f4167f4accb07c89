#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/metadata/exif_builder.h"

namespace ostra {

namespace {

using test::ExifBuilder;

Dictionary readTree(const Bytes& exif, Dictionary tree = {}) {
  Carrier carrier;
  carrier.exif = exif;
  return readMetadata(carrier, std::move(tree)).tree;
}

const Dictionary& group(const Dictionary& tree, const char* key) {
  static const Dictionary none;
  const auto found = tree.find(key);
  return found == tree.end() ? none : *found->second.get<Dictionary>();
}

Value exifValue(const ExifBuilder::Entry& entry, bool bigEndian, const char* key) {
  const Dictionary tree =
      readTree(ExifBuilder(bigEndian).build({ExifBuilder(bigEndian).directory(0x8769, {entry})}));
  const Dictionary& exif = group(tree, "{Exif}");
  return exif.contains(key) ? exif.at(key) : Value("nothing");
}

Value gpsValue(const ExifBuilder::Entry& entry, const char* key) {
  const Dictionary tree = readTree(ExifBuilder(false).build({ExifBuilder(false).directory(0x8825, {entry})}));
  const Dictionary& gps = group(tree, "{GPS}");
  return gps.contains(key) ? gps.at(key) : Value("nothing");
}

}  // namespace

TEST(ExifRead, ReadsACameraBlockInBothByteOrders) {
  for (const bool big : {false, true}) {
    const Dictionary tree = readTree(test::cameraBlock(big));
    EXPECT_TRUE(tree.at("Orientation") == Value(6));
    EXPECT_TRUE(tree.at("DPIWidth") == Value(300.0));
    EXPECT_TRUE(tree.at("DPIHeight") == Value(300.0));
    EXPECT_TRUE(group(tree, "{TIFF}").at("Make") == Value("Canon"));
    EXPECT_TRUE(group(tree, "{Exif}").at("ExposureTime") == Value(1 / 60.0));
    EXPECT_TRUE(group(tree, "{Exif}").at("ExposureBiasValue") == Value(-2 / 3.0));
    EXPECT_TRUE(group(tree, "{Exif}").at("PixelYDimension") == Value(3000));
    EXPECT_NEAR(*group(tree, "{GPS}").at("Latitude").number(), 48.8583, 1e-9);
    EXPECT_TRUE(group(tree, "{GPS}").at("TimeStamp") == Value("04:05:06"));
    EXPECT_FALSE(group(tree, "{Exif}").contains("MakerNote"));
    EXPECT_EQ(tree.size(), 6u);
  }
}

TEST(ExifRead, TheOrientationOfTheFormatHolds) {
  const Dictionary tree = readTree(test::cameraBlock(false), {{"Orientation", 3}});
  EXPECT_TRUE(tree.at("Orientation") == Value(3));
  EXPECT_TRUE(group(tree, "{TIFF}").at("Orientation") == Value(3));
}

TEST(ExifRead, TheDensityOfTheFormatHolds) {
  const Dictionary tree = readTree(test::cameraBlock(false), {{"DPIWidth", 72}, {"DPIHeight", 72}});
  EXPECT_TRUE(tree.at("DPIWidth") == Value(72));
}

TEST(ExifRead, CountsCentimetresAsInches) {
  const ExifBuilder b(false);
  const auto tree = readTree(b.build({b.rationals(0x011A, {{100, 1}}), b.shorts(0x0128, {3})}));
  EXPECT_TRUE(tree.at("DPIWidth") == Value(254.0));
  EXPECT_TRUE(tree.at("DPIHeight") == Value(254.0));
  EXPECT_FALSE(
      readTree(b.build({b.rationals(0x011A, {{100, 1}}), b.shorts(0x0128, {1})})).contains("DPIWidth"));
}

TEST(ExifRead, LeavesOutARationalOverZero) {
  const ExifBuilder b(false);
  EXPECT_TRUE(exifValue(b.rationals(0x829A, {{1, 0}}), false, "ExposureTime") == Value("nothing"));
  EXPECT_TRUE(exifValue(b.rationals(0xA432, {{24, 1}, {70, 1}, {0, 0}, {0, 0}}), false,
                        "LensSpecification") == Value("nothing"));
  EXPECT_TRUE(gpsValue(b.rationals(2, {{48, 1}, {0, 0}, {0, 1}}), "Latitude") == Value("nothing"));
}

TEST(ExifRead, ReadsVersionsWithoutTheirLastZeros) {
  const ExifBuilder b(false);
  const auto version = [&](const char* digits) {
    return exifValue(b.bytes(0x9000, 7, Bytes(digits, digits + 4)), false, "ExifVersion");
  };
  EXPECT_TRUE(version("0221") == Value(Array{2, 2, 1}));
  EXPECT_TRUE(version("0230") == Value(Array{2, 3}));
  EXPECT_TRUE(version("0100") == Value(Array{1, 0}));
  EXPECT_TRUE(version("02x0") == Value("nothing"));
}

TEST(ExifRead, ReadsCommentsOfEachEncoding) {
  const auto comment = [&](const Bytes& bytes, bool big) {
    return exifValue(ExifBuilder(big).bytes(0x9286, 7, bytes), big, "UserComment");
  };
  EXPECT_TRUE(comment({'A', 'S', 'C', 'I', 'I', 0, 0, 0, 'h', 'i', 0, 0}, false) == Value("hi"));
  EXPECT_TRUE(comment({0, 0, 0, 0, 0, 0, 0, 0, 'h', 'i'}, false) == Value("hi"));
  EXPECT_TRUE(comment({'U', 'N', 'I', 'C', 'O', 'D', 'E', 0, 0xE9, 0}, false) == Value("\xC3\xA9"));
  EXPECT_TRUE(comment({'U', 'N', 'I', 'C', 'O', 'D', 'E', 0, 0, 0xE9}, true) == Value("\xC3\xA9"));
  EXPECT_TRUE(comment({'J', 'I', 'S', 0, 0, 0, 0, 0, 1, 2}, false) == Value("nothing"));
  EXPECT_TRUE(comment({0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, false) == Value("nothing"));
}

TEST(ExifRead, TakesTheFirstOfTwoEntriesOfOneTag) {
  const ExifBuilder b(true);
  const Dictionary tree = readTree(b.build({b.text(0x010F, "First"), b.text(0x010F, "Second")}));
  EXPECT_TRUE(group(tree, "{TIFF}").at("Make") == Value("First"));
}

TEST(ExifRead, SkipsWhatItCannotReadAndReadsTheRest) {
  const ExifBuilder b(false);
  auto outside = b.text(0x010F, "Maker out of reach");
  auto overflow = b.rationals(0x013E, {{1, 3}, {1, 3}});
  overflow.count = 0x20000001;  // times 8 is 8 in 32 bits
  auto unknownType = b.shorts(0x0131, {1});
  unknownType.type = 77;
  Bytes block = b.build({outside, b.text(0x0110, "Model"), b.shorts(0x0112, {9}), unknownType, overflow});
  b.put(block, 8 + 2 + 8, static_cast<std::uint32_t>(block.size() - 4), 4);
  const Dictionary tree = readTree(block);
  EXPECT_EQ(group(tree, "{TIFF}").size(), 1u);
  EXPECT_TRUE(group(tree, "{TIFF}").at("Model") == Value("Model"));
  EXPECT_FALSE(tree.contains("Orientation"));
}

TEST(ExifRead, ReadsNothingOfABlockWithBrokenBones) {
  const ExifBuilder b(false);
  const Bytes sound = b.build({b.text(0x010F, "Maker"), b.directory(0x8769, {b.shorts(0x8822, {1})})});
  const std::size_t pointer = 8 + 2 + 12 + 8, next = 8 + 2 + 24;
  const auto with = [&](std::size_t at, std::uint32_t value) {
    Bytes block = sound;
    b.put(block, at, value, 4);
    return block;
  };
  ASSERT_EQ(readTree(sound).size(), 2u);
  EXPECT_TRUE(readTree(with(0, 0)).empty());                 // no byte order
  EXPECT_TRUE(readTree(with(4, 0xFFFFFFF0)).empty());        // the first directory outside
  EXPECT_TRUE(readTree(with(4, 2)).empty());                 // in the header
  EXPECT_TRUE(readTree(with(pointer, 0xFFFFFFF0)).empty());  // Exif outside
  EXPECT_TRUE(readTree(with(pointer, 8)).empty());           // Exif is the first directory
  EXPECT_TRUE(readTree(with(pointer, 10)).empty());          // Exif inside the first directory
  EXPECT_TRUE(readTree(with(next, 8)).empty());              // a circle
  EXPECT_EQ(readTree(with(next, 0xFFFFFFF0)).size(), 2u);    // a thumbnail that is not there is no loss
  EXPECT_TRUE(readTree({}).empty());
  EXPECT_TRUE(readTree({'I', 'I', 42, 0}).empty());
}

TEST(ExifRead, ReadsDirectoriesAtOddOffsetsAndWithoutANextPointer) {
  const ExifBuilder b(false);
  Bytes block = b.build({b.shorts(0x0112, {8})});
  block.insert(block.begin() + 8, 0);
  b.put(block, 4, 9, 4);
  block.resize(block.size() - 4);
  EXPECT_TRUE(readTree(block).at("Orientation") == Value(8));
}

}  // namespace ostra
