#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/metadata/exif_builder.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

using test::ExifBuilder;

Properties read(const Bytes& exif) {
  Carrier carrier;
  carrier.exif = exif;
  return readMetadata(carrier, {});
}

Dictionary& group(Properties& properties, const char* key) {
  return *properties.tree.at(key).get<Dictionary>();
}

Bytes written(const Properties& properties, const WrittenPicture& picture = {}) {
  const auto blocks = writeMetadata(properties, picture);
  EXPECT_TRUE(blocks.has_value());
  return blocks ? blocks->exif : Bytes();
}

/// The camera's block as it is written when nobody changes anything: without its thumbnail.
Bytes bare(bool bigEndian) { return written(read(test::cameraBlock(bigEndian))); }

bool contains(const Bytes& block, std::string_view pattern) {
  return test::positionOf(block, pattern) != SIZE_MAX;
}

}  // namespace

class ExifPatch : public testing::TestWithParam<bool> {
 protected:
  Bytes camera_ = test::cameraBlock(GetParam());
  Bytes bare_ = bare(GetParam());
};
INSTANTIATE_TEST_SUITE_P(ByteOrders, ExifPatch, testing::Bool(),
                         [](const auto& order) { return order.param ? "BigEndian" : "LittleEndian"; });

TEST_P(ExifPatch, AnUnchangedTreeChangesTheThumbnailOnly) {
  ASSERT_LT(bare_.size(), camera_.size() - 600);
  const Bytes kept(camera_.begin(), camera_.begin() + static_cast<std::ptrdiff_t>(bare_.size()));
  const std::size_t next = 8 + 2 + 12 * 10;
  for (const std::size_t place : test::differences(kept, bare_)) {
    EXPECT_GE(place, next);
    EXPECT_LT(place, next + 4);
  }
  EXPECT_EQ(written(read(bare_)), bare_);
}

TEST_P(ExifPatch, AThumbnailInTheMiddleIsZeroed) {
  Bytes block = camera_;
  block.insert(block.end(), {'t', 'a', 'i', 'l'});
  const Bytes result = written(read(block));
  ASSERT_EQ(result.size(), block.size());
  EXPECT_FALSE(contains(result, "ZZZZ"));
  EXPECT_TRUE(contains(result, "tail"));
}

TEST_P(ExifPatch, RemovingTheColorSpaceTouchesItsDirectoryAndTheInteroperabilityIndexOnly) {
  Properties properties = read(camera_);
  group(properties, "{Exif}").erase("ColorSpace");
  const Bytes result = written(properties);
  ASSERT_EQ(result.size(), bare_.size());
  EXPECT_EQ(test::makerNoteOf(result), test::makerNoteOf(bare_));
  // The directory is 12 entries long; the entries after the eighth move up.
  const std::size_t directory =
      test::positionOf(bare_, std::string_view(GetParam() ? "\0\x0C\x82\x9A" : "\x0C\0\x9A\x82", 4));
  ASSERT_NE(directory, SIZE_MAX);
  // The first value of a directory of two entries.
  const std::size_t index = test::positionOf(bare_, "R98");
  ASSERT_NE(index, SIZE_MAX);
  EXPECT_FALSE(contains(result, "R98"));
  for (const std::size_t place : test::differences(result, bare_)) {
    const bool inInterop = place >= index - 10 && place < index + 20;
    EXPECT_TRUE(inInterop || place == directory || place == directory + 1 ||
                (place >= directory + 2 + 12 * 7 && place < directory + 2 + 12 * 12));
  }
  Properties again = read(result);
  EXPECT_FALSE(group(again, "{Exif}").contains("ColorSpace"));
  properties.carrier = nullptr;
  EXPECT_TRUE(again.tree == properties.tree);
}

TEST_P(ExifPatch, AnInteroperabilityIndexThatSaysAdobeRgbGoesAlsoWithoutAColorSpace) {
  const ExifBuilder b(GetParam());
  const auto blockWith = [&](std::string_view index) {
    const auto interop = b.directory(0xA005, {b.text(1, index), b.bytes(2, 7, {'0', '1', '0', '0'})});
    return b.build({b.directory(0x8769, {b.shorts(0x9209, {1}), interop})});
  };
  EXPECT_FALSE(contains(written(read(blockWith("R03"))), "R03"));
  EXPECT_TRUE(contains(written(read(blockWith("R98"))), "R98"));
}

TEST_P(ExifPatch, ADirectoryThatLacksItsLastOffsetGetsOneWhereTheBlockGrows) {
  const ExifBuilder b(GetParam());
  Bytes block = b.build({b.shorts(0x0112, {6})});
  block.resize(8 + 2 + 12);
  Properties properties = read(block);
  EXPECT_EQ(written(properties), block);
  properties.tree.insert_or_assign("{Exif}", Dictionary{{"FNumber", 2.8}, {"ISOSpeed", 100}});
  Properties again = read(written(properties));
  EXPECT_TRUE(again.tree == properties.tree);
}

TEST_P(ExifPatch, ARemovedTextLeavesNoByteBehind) {
  Properties properties = read(camera_);
  group(properties, "{TIFF}").erase("Artist");
  const Bytes result = written(properties);
  ASSERT_TRUE(contains(bare_, "Ann Other"));
  EXPECT_FALSE(contains(result, "Ann Other"));
  EXPECT_EQ(result.size(), bare_.size());
}

TEST_P(ExifPatch, ARemovedTextThatIsSharedStaysForTheOther) {
  const ExifBuilder b(GetParam());
  Bytes block = b.build({b.text(0x013B, "shared text"), b.text(0x8298, "shared text")});
  const std::size_t first = test::positionOf(block, "shared text");
  b.put(block, 8 + 2 + 12 + 8, static_cast<std::uint32_t>(first), 4);
  Properties properties = read(block);
  group(properties, "{TIFF}").erase("Artist");
  const Bytes result = written(properties);
  Properties again = read(result);
  EXPECT_TRUE(group(again, "{TIFF}") == (Dictionary{{"Copyright", "shared text"}}));
}

TEST_P(ExifPatch, ASharedTextIsNotOverwrittenThroughOneOfItsOwners) {
  const ExifBuilder b(GetParam());
  Bytes block = b.build({b.text(0x013B, "shared text"), b.text(0x8298, "shared text")});
  b.put(block, 8 + 2 + 12 + 8, static_cast<std::uint32_t>(test::positionOf(block, "shared text")), 4);
  Properties properties = read(block);
  group(properties, "{TIFF}").at("Artist") = "changed it";
  Properties again = read(written(properties));
  EXPECT_TRUE(group(again, "{TIFF}") == (Dictionary{{"Artist", "changed it"}, {"Copyright", "shared text"}}));
}

TEST_P(ExifPatch, AnOrientationIsTwoBytes) {
  Properties properties = read(camera_);
  properties.tree.insert_or_assign("Orientation", 3);
  const Bytes result = written(properties);
  const auto places = test::differences(result, bare_);
  ASSERT_EQ(places.size(), 1u);
  EXPECT_EQ(result[places[0]], 3);
  EXPECT_EQ(bare_[places[0]], 6);
}

TEST_P(ExifPatch, TheOrientationOfTheTopLevelWins) {
  Properties properties = read(camera_);
  group(properties, "{TIFF}").insert_or_assign("Orientation", 1);
  EXPECT_EQ(written(properties), bare_);
  properties.tree.erase("Orientation");
  Properties again = read(written(properties));
  EXPECT_TRUE(again.tree.at("Orientation") == Value(1));
  group(properties, "{TIFF}").erase("Orientation");
  EXPECT_FALSE(read(written(properties)).tree.contains("Orientation"));
}

TEST_P(ExifPatch, AnOrientationFromElsewhereIsWrittenWhereTheBlockContradicts) {
  Carrier carrier;
  carrier.exif = camera_;
  const Properties properties = readMetadata(carrier, {{"Orientation", 8}});
  EXPECT_TRUE(read(written(properties)).tree.at("Orientation") == Value(8));
}

TEST_P(ExifPatch, AShorterTextIsPatchedInPlace) {
  Properties properties = read(camera_);
  group(properties, "{TIFF}").insert_or_assign("Artist", "Someone");
  const Bytes result = written(properties);
  EXPECT_EQ(result.size(), bare_.size());
  const std::size_t place = test::positionOf(bare_, "Ann Other");
  EXPECT_EQ(test::positionOf(result, std::string_view("Someone\0\0\0", 10)), place);
  EXPECT_TRUE(group(properties, "{TIFF}") == group(*std::make_unique<Properties>(read(result)), "{TIFF}"));
}

TEST_P(ExifPatch, ALongerTextIsAppendedAndNothingElseMoves) {
  Properties properties = read(camera_);
  group(properties, "{TIFF}").insert_or_assign("Artist", "Someone with a longer name");
  const Bytes result = written(properties);
  EXPECT_EQ(test::positionOf(result, "Someone"), bare_.size());
  EXPECT_EQ(test::positionOf(result, "MakerNote inside"), test::positionOf(bare_, "MakerNote inside"));
  EXPECT_EQ(test::makerNoteOf(result), test::makerNoteOf(bare_));
  EXPECT_FALSE(contains(result, "Ann Other"));
  Properties again = read(result);
  EXPECT_TRUE(again.tree == properties.tree);
}

TEST_P(ExifPatch, WhatIsAppendedBeginsAtAnEvenOffset) {
  bare_.push_back('x');
  ASSERT_EQ(bare_.size() % 2, 1u);
  Properties properties = read(bare_);
  group(properties, "{TIFF}").insert_or_assign("Artist", "Someone with a longer name");
  EXPECT_EQ(test::positionOf(written(properties), "Someone"), bare_.size() + 1);
}

TEST_P(ExifPatch, ATextThatFitsTheEntryMovesIntoItAndBack) {
  Properties properties = read(camera_);
  group(properties, "{TIFF}").insert_or_assign("Artist", "Ann");
  Properties shorter = read(written(properties));
  EXPECT_TRUE(group(shorter, "{TIFF}").at("Artist") == Value("Ann"));
  group(shorter, "{TIFF}").insert_or_assign("Artist", "Ann Other");
  Properties longer = read(written(shorter));
  EXPECT_TRUE(group(longer, "{TIFF}").at("Artist") == Value("Ann Other"));
}

TEST_P(ExifPatch, NewKeysAreAddedToEveryDirectory) {
  Properties properties = read(camera_);
  group(properties, "{TIFF}").insert_or_assign("Copyright", "(c) somebody");
  group(properties, "{Exif}").insert_or_assign("LensModel", "A long lens");
  group(properties, "{Exif}").insert_or_assign("Flash", 16);
  group(properties, "{GPS}").insert_or_assign("MapDatum", "WGS-84");
  const Bytes result = written(properties);
  Properties again = read(result);
  EXPECT_TRUE(again.tree == properties.tree);
  EXPECT_EQ(test::makerNoteOf(result), test::makerNoteOf(bare_));
  EXPECT_EQ(test::positionOf(result, "MakerNote inside"), test::positionOf(bare_, "MakerNote inside"));
  EXPECT_TRUE(contains(result, "unknown but precious"));
}

TEST_P(ExifPatch, AGroupIsMadeWhereThereWasNone) {
  const ExifBuilder b(GetParam());
  Properties properties = read(b.build({b.text(0x010F, "Maker")}));
  properties.tree.insert_or_assign("{GPS}", Dictionary{{"Latitude", 12.5}, {"LatitudeRef", "N"}});
  properties.tree.insert_or_assign("{Exif}", Dictionary{{"FNumber", 2.8}});
  EXPECT_TRUE(read(written(properties)).tree == properties.tree);
}

TEST_P(ExifPatch, ARemovedGroupGoesWithAllThatHangsOnIt) {
  Properties properties = read(camera_);
  properties.tree.erase("{Exif}");
  const Bytes result = written(properties);
  EXPECT_FALSE(contains(result, "MakerNote inside"));
  EXPECT_FALSE(contains(result, "unknown but precious"));
  EXPECT_FALSE(contains(result, "R98"));
  EXPECT_TRUE(read(result).tree == properties.tree);
  properties = read(camera_);
  properties.tree.erase("{GPS}");
  EXPECT_TRUE(read(written(properties)).tree == properties.tree);
  EXPECT_EQ(test::makerNoteOf(written(properties)), test::makerNoteOf(bare_));
}

TEST_P(ExifPatch, TheTiffGroupGoesWithoutTheOrientationOfTheTopLevel) {
  Properties properties = read(camera_);
  properties.tree.erase("{TIFF}");
  const Bytes result = written(properties);
  EXPECT_FALSE(contains(result, "Canon"));
  Properties again = read(result);
  EXPECT_TRUE(group(again, "{TIFF}") == (Dictionary{{"Orientation", 6}}));
  EXPECT_TRUE(again.tree.at("{Exif}") == properties.tree.at("{Exif}"));
}

TEST_P(ExifPatch, NoEmptyDirectoryIsLeft) {
  const ExifBuilder b(GetParam());
  Properties properties =
      read(b.build({b.text(0x010F, "Maker"), b.directory(0x8769, {b.shorts(0xA001, {1})})}));
  group(properties, "{Exif}").erase("ColorSpace");
  const Bytes result = written(properties);
  const auto pointer = b.number(0x8769, 2);
  EXPECT_FALSE(contains(result, std::string_view(reinterpret_cast<const char*>(pointer.data()), 2)));
  group(properties, "{TIFF}").erase("Make");
  EXPECT_TRUE(written(properties).empty());
}

TEST_P(ExifPatch, EveryCopyOfARemovedTagGoes) {
  const ExifBuilder b(GetParam());
  Properties properties =
      read(b.build({b.text(0x010F, "First maker"), b.text(0x010F, "Second maker"), b.text(0x0110, "Model")}));
  group(properties, "{TIFF}").erase("Make");
  const Bytes result = written(properties);
  EXPECT_FALSE(contains(result, "First"));
  EXPECT_FALSE(contains(result, "Second"));
  Properties changed = read(b.build({b.text(0x010F, "First maker"), b.text(0x010F, "Second maker")}));
  group(changed, "{TIFF}").insert_or_assign("Make", "Third");
  EXPECT_FALSE(contains(written(changed), "Second"));
}

TEST_P(ExifPatch, ThePixelSizeIsThatOfThePictureWrittenWhereverItStands) {
  const ExifBuilder b(GetParam());
  const Bytes block = b.build({b.shorts(0x0100, {4000}), b.longs(0x0101, {3000}),
                               b.directory(0x8769, {b.longs(0xA002, {4000}), b.shorts(0xA003, {3000})})});
  const Bytes result = written(read(block), {70000, 80000});
  Properties again = read(result);
  EXPECT_TRUE(group(again, "{Exif}").at("PixelXDimension") == Value(70000));
  EXPECT_TRUE(group(again, "{Exif}").at("PixelYDimension") == Value(80000));
  EXPECT_EQ(result.size(), block.size());
  EXPECT_EQ(written(read(block), {4000, 3000}), block);
  const Bytes without = b.build({b.text(0x010F, "Maker")});
  EXPECT_EQ(written(read(without), {10, 10}), without);
}

TEST_P(ExifPatch, AChangedDensityIsToldInBothPlaces) {
  Properties properties = read(camera_);
  properties.tree.insert_or_assign("DPIWidth", 72);
  properties.tree.insert_or_assign("DPIHeight", 144);
  Properties again = read(written(properties));
  EXPECT_TRUE(group(again, "{TIFF}").at("XResolution") == Value(72.0));
  EXPECT_TRUE(group(again, "{TIFF}").at("YResolution") == Value(144.0));
  Properties inner = read(camera_);
  group(inner, "{TIFF}").insert_or_assign("XResolution", 99.0);
  EXPECT_EQ(written(inner), bare_);
}

TEST_P(ExifPatch, AnUnreadableEntryKeepsItsBytes) {
  const ExifBuilder b(GetParam());
  auto strange = b.text(0x0131, "strange software");
  strange.type = 99;
  const Bytes block = b.build({b.text(0x010F, "Maker of it"), strange, b.rationals(0x9999, {{1, 0}})});
  EXPECT_EQ(written(read(block)), block);
  Properties properties = read(block);
  group(properties, "{TIFF}").insert_or_assign("Make", "Somebody else altogether");
  EXPECT_TRUE(contains(written(properties), "strange software"));
}

TEST_P(ExifPatch, AnEntryThatPointsBehindTheEndComesToNoMeaningThere) {
  const ExifBuilder b(GetParam());
  auto outside = b.text(0x8298, "Copyright of nobody");
  Bytes block = b.build({b.text(0x013B, "Ann Other"), outside});
  const std::size_t pointer = 8 + 2 + 12 + 8;
  block.resize(test::positionOf(block, "Copyright"));
  Properties properties = read(block);
  EXPECT_EQ(written(properties), block);
  group(properties, "{TIFF}").insert_or_assign("Artist", "A very long name, and longer than what is missing");
  EXPECT_TRUE(read(written(properties)).tree == properties.tree);
  b.put(block, pointer, 0xFFFFFF00, 4);
  EXPECT_TRUE(read(written(properties)).tree == properties.tree);
}

TEST_P(ExifPatch, AThumbnailDirectoryAcrossAnotherDoesNotHinderItsEdits) {
  const bool big = GetParam();
  const ExifBuilder b(big);
  // The first entry of the Exif directory dangles. Where its value stands, the thumbnail's directory starts:
  // empty, and once that entry is gone its next directory is the first of all.
  const auto dangling = b.bytes(0x9998, 4, b.number(0, 4));
  const auto second = b.longs(0x9999, {big ? 0u : 0x00080000u});
  const auto third = b.longs(big ? 8 : 0, {77});
  Bytes block = b.build({b.directory(0x8769, {dangling, second, third})});
  b.put(block, 22, 36, 4);
  b.put(block, 32, 100, 4);
  b.put(block, 36, big ? 0x0000FFFF : 0xFFFF0000, 4);
  Properties properties = read(block);
  properties.tree.insert_or_assign("{TIFF}", Dictionary{{"Make", "A maker with a long name"}});
  EXPECT_TRUE(groupOf(read(written(properties)).tree, "{TIFF}") == group(properties, "{TIFF}"));
}

TEST_P(ExifPatch, AnInteroperabilityDirectoryAcrossAnotherCountsAsNone) {
  const bool big = GetParam();
  const ExifBuilder b(big);
  // The last two bytes of the first entry count two more: an Adobe RGB index, which would be removed.
  const auto place =
      b.directory(0x8825, {b.longs(0x50, {big ? 2u : 2u << 16}), b.text(1, "R03"), b.text(3, "E")});
  Bytes block = b.build({b.directory(0x8769, {b.longs(0xA005, {0})}), place});
  const auto order = big ? ByteOrder::big : ByteOrder::little;
  const std::size_t exif = read32(block, 8 + 2 + 8, order), gps = read32(block, 8 + 2 + 12 + 8, order);
  b.put(block, exif + 2 + 8, static_cast<std::uint32_t>(gps + 2 + 10), 4);
  Properties properties = read(block);
  ASSERT_EQ(group(properties, "{GPS}").size(), 2U);
  Properties again = read(written(properties));
  EXPECT_TRUE(group(again, "{GPS}") == group(properties, "{GPS}"));
}

TEST_P(ExifPatch, ASecondPointerIsNotFollowedWhenTheFirstIsRemoved) {
  const ExifBuilder b(GetParam());
  Bytes block = b.build({b.longs(0x8769, {0}), b.longs(0x8769, {0xFFFFFF00})});
  b.put(block, 8 + 2 + 4, 0x1000, 4);  // too many values for the block: no pointer, and removed for that
  Properties properties = read(block);
  properties.tree.insert_or_assign("{TIFF}", Dictionary{{"Make", "A maker with a long name"}});
  EXPECT_TRUE(groupOf(read(written(properties)).tree, "{TIFF}") == group(properties, "{TIFF}"));
}

TEST_P(ExifPatch, AValueThatATagCannotHoldTakesTheOldOneAway) {
  Properties properties = read(camera_);
  group(properties, "{Exif}").insert_or_assign("FNumber", "wide open");
  group(properties, "{TIFF}").insert_or_assign("ResolutionUnit", 2.5);
  Properties again = read(written(properties));
  EXPECT_FALSE(group(again, "{Exif}").contains("FNumber"));
}

TEST_P(ExifPatch, AMalformedBlockIsRefused) {
  const ExifBuilder b(GetParam());
  Bytes block = camera_;
  b.put(block, 8 + 2 + 12 * 8 + 8, 0xFFFFFF, 4);
  EXPECT_FALSE(writeMetadata(read(block), {}));
  EXPECT_TRUE(read(block).tree.empty());
  EXPECT_FALSE(writeMetadata(read(Bytes(200, 0x41)), {}));
}

TEST_P(ExifPatch, ExiftoolFindsEverythingElseUnchanged) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  Properties properties = read(camera_);
  group(properties, "{Exif}").erase("ColorSpace");
  group(properties, "{TIFF}").insert_or_assign("Artist", "Someone with a longer name");
  group(properties, "{TIFF}").insert_or_assign("Copyright", "new");
  properties.tree.insert_or_assign("Orientation", 1);
  const Bytes result = written(properties, {4000, 3000});
  auto before = test::exiftoolTags(camera_, "exif"), after = test::exiftoolTags(result, "exif");
  ASSERT_EQ(before.at("Canon:CanonImageType"), "MakerNote inside");
  EXPECT_EQ(before.erase("ExifIFD:ColorSpace"), 1u);
  EXPECT_EQ(before.erase("InteropIFD:InteropIndex"), 1u);
  before["IFD0:Artist"] = "Someone with a longer name";
  before["IFD0:Copyright"] = "new";
  before["IFD0:Orientation"] = "1";
  for (auto* tags : {&before, &after}) {
    std::erase_if(*tags, [](const auto& tag) {
      return tag.first.starts_with("System:") || tag.first.starts_with("IFD1:") ||
             tag.first.starts_with("File:");
    });
  }
  EXPECT_EQ(before, after);
}

TEST(ExifFresh, IsMadeOfTheKnownTagsAlone) {
  Dictionary tree{{"Orientation", 6}, {"DPIWidth", 300.0}, {"DPIHeight", 300.0}, {"ColorModel", "RGB"}};
  Properties properties{tree, nullptr};
  Properties again = read(written(properties));
  EXPECT_TRUE(again.tree == (Dictionary{{"Orientation", 6}, {"{TIFF}", Dictionary{{"Orientation", 6}}}}));
  properties.tree.insert_or_assign("{Exif}", Dictionary{{"PixelXDimension", 1}, {"PixelYDimension", 1}});
  again = read(written(properties, {20, 30}));
  EXPECT_TRUE(group(again, "{Exif}") == (Dictionary{{"PixelXDimension", 20}, {"PixelYDimension", 30}}));
  EXPECT_TRUE(written({{{"ColorModel", "RGB"}}, nullptr}).empty());
}

}  // namespace ostra
