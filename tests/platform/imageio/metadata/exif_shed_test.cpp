#include "platform/imageio/metadata/exif_shed.h"

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/metadata/exif_builder.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

using test::ExifBuilder;

constexpr std::size_t kSegment = 65527;

Dictionary readTree(const Bytes& exif) {
  Carrier carrier;
  carrier.exif = exif;
  return readMetadata(carrier, {}).tree;
}

}  // namespace

TEST(ExifShed, LeavesABlockThatFitsAsItIs) {
  const Bytes block = test::cameraBlock(false);
  EXPECT_EQ(shedExif(block, block.size()), block);
}

TEST(ExifShed, ClosesGapsBeforeItDropsAnything) {
  for (const bool big : {false, true}) {
    Bytes block = test::cameraBlock(big);
    const Dictionary tree = readTree(block);
    block.resize(80000);
    const auto smaller = shedExif(block, kSegment);
    ASSERT_TRUE(smaller);
    EXPECT_LT(smaller->size(), 2000u);
    EXPECT_TRUE(readTree(*smaller) == tree);
    EXPECT_EQ(test::positionOf(*smaller, "MakerNote inside"), test::positionOf(block, "MakerNote inside"));
    EXPECT_NE(test::positionOf(*smaller, "unknown but precious"), SIZE_MAX);
    EXPECT_NE(test::positionOf(*smaller, "R98"), SIZE_MAX);
  }
}

TEST(ExifShed, ExiftoolReadsTheMakerNoteOfANewLayout) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  Bytes block = test::cameraBlock(true);
  block.resize(80000);
  const auto smaller = shedExif(block, kSegment);
  ASSERT_TRUE(smaller);
  const auto tags = test::exiftoolTags(*smaller, "exif");
  EXPECT_EQ(tags.at("Canon:CanonImageType"), "MakerNote inside");
  EXPECT_EQ(tags.at("InteropIFD:InteropIndex"), "R98");
}

TEST(ExifShed, DropsTheLargestOpaqueValueFirst) {
  const ExifBuilder b(false);
  const Bytes small(100, 's');
  const std::string description(30000, 'd');
  const Bytes block =
      b.build({b.text(0x010E, description), b.shorts(0x0112, {6}), b.bytes(0xC000, 7, Bytes(40000, 'o')),
               b.bytes(0xC001, 7, small), b.directory(0x8769, {b.bytes(0x927C, 7, Bytes(20000, 'm'))})});
  const auto smaller = shedExif(block, kSegment);
  ASSERT_TRUE(smaller);
  EXPECT_EQ(test::positionOf(*smaller, "oooo"), SIZE_MAX);
  EXPECT_NE(test::positionOf(*smaller, "dddd"), SIZE_MAX);
  EXPECT_NE(test::positionOf(*smaller, "ssss"), SIZE_MAX);
  const auto tiny = shedExif(block, 35000);
  ASSERT_TRUE(tiny);
  EXPECT_EQ(test::positionOf(*tiny, "mmmm"), SIZE_MAX);
  EXPECT_NE(test::positionOf(*tiny, "dddd"), SIZE_MAX);
}

TEST(ExifShed, TheOrientationIsTheLastToGo) {
  const Bytes block = test::cameraBlock(true);
  for (std::size_t limit = block.size(); limit >= 26; --limit) {
    const auto smaller = shedExif(block, limit);
    ASSERT_TRUE(smaller) << limit;
    ASSERT_LE(smaller->size(), limit);
    ASSERT_TRUE(readTree(*smaller).at("Orientation") == Value(6)) << limit;
  }
  for (const std::size_t limit : {25, 20, 8, 0}) EXPECT_FALSE(shedExif(block, limit));
}

TEST(ExifShed, ValuesThatShareTheirBytesDoNotMultiplyThem) {
  const ExifBuilder b(false);
  std::vector<ExifBuilder::Entry> entries;
  for (std::uint16_t tag = 1; tag <= 4000; ++tag) entries.push_back(b.bytes(tag, 7, {}));
  Bytes block = b.build(entries);
  block.resize(1 << 20, 'x');
  for (std::size_t i = 0; i < entries.size(); ++i) {
    b.put(block, 8 + 2 + 12 * i + 4, 900000, 4);
    b.put(block, 8 + 2 + 12 * i + 8, 100000, 4);
  }
  EXPECT_FALSE(shedExif(block, kSegment));
}

TEST(ExifShed, RefusesAMalformedBlock) { EXPECT_FALSE(shedExif(Bytes(70000, 'x'), kSegment)); }

}  // namespace ostra
