#include "platform/imageio/metadata/carrier.h"

#include <gtest/gtest.h>

#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "tests/platform/imageio/metadata/exif_builder.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

constexpr std::string_view kXmp =
    "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Description "
    "xmlns:t='http://ns.adobe.com/tiff/1.0/'"
    " xmlns:e='http://ns.adobe.com/exif/1.0/' t:Orientation='6' t:ImageWidth='2' "
    "e:GPSLatitude='1,2N'/></r:RDF>";

Carrier fullCarrier() {
  Carrier carrier;
  carrier.exif = test::cameraBlock(false);
  carrier.xmp = bytesOf(kXmp);
  carrier.iptc = bytesOf(std::string_view("\x1C\2\x5A\0\4City", 9));
  carrier.photoshopResources = bytesOf(std::string_view("8BIM\4\x25\0\0\0\0\0\2ab", 14));
  carrier.comments = {"a comment"};
  return carrier;
}

}  // namespace

TEST(Metadata, AnUnchangedTreeKeepsEveryBlock) {
  const Properties properties = readMetadata(fullCarrier(), {{"PixelWidth", 2}});
  const auto blocks = writeMetadata(properties, {4000, 3000});
  ASSERT_TRUE(blocks);
  EXPECT_EQ(blocks->iptc, fullCarrier().iptc);
  EXPECT_EQ(blocks->photoshopResources, fullCarrier().photoshopResources);
  EXPECT_EQ(blocks->comments, fullCarrier().comments);
  EXPECT_EQ(test::makerNoteOf(blocks->exif), test::makerNoteOf(fullCarrier().exif));
  std::string xmp(kXmp);
  xmp.erase(xmp.find(" t:ImageWidth='2'"), 17);
  EXPECT_EQ(asText(blocks->xmp), xmp);
}

TEST(Metadata, TheOrientationIsToldAlikeInEveryBlock) {
  Properties properties = readMetadata(fullCarrier(), {});
  properties.tree.insert_or_assign("Orientation", 1);
  const auto blocks = writeMetadata(properties, {});
  ASSERT_TRUE(blocks);
  EXPECT_NE(asText(blocks->xmp).find("t:Orientation='1'"), std::string_view::npos);
  Carrier again;
  again.exif = blocks->exif;
  EXPECT_TRUE(readMetadata(again, {}).tree.at("Orientation") == Value(1));
  const Properties contradicting = readMetadata(fullCarrier(), {{"Orientation", 3}});
  EXPECT_NE(asText(contradicting.carrier->xmp).find("t:Orientation='3'"), std::string_view::npos);
}

TEST(Metadata, AGroupTakesItsPartOfEveryBlock) {
  Properties properties = readMetadata(fullCarrier(), {});
  const auto before = properties.carrier;
  EXPECT_TRUE(properties.remove("{GPS}"));
  EXPECT_FALSE(properties.remove("{GPS}"));
  EXPECT_TRUE(before->tree.contains("{GPS}"));
  EXPECT_EQ(asText(properties.carrier->xmp).find("GPSLatitude"), std::string_view::npos);
  EXPECT_TRUE(properties.remove("{IPTC}"));
  EXPECT_TRUE(properties.carrier->iptc.empty());
  const auto blocks = writeMetadata(properties, {});
  ASSERT_TRUE(blocks);
  EXPECT_TRUE(blocks->photoshopResources.empty());  // a digest of records that are gone
  Carrier again;
  again.exif = blocks->exif;
  EXPECT_FALSE(readMetadata(again, {}).tree.contains("{GPS}"));
}

TEST(Metadata, AGroupErasedFromTheTreeGoesLikeOneThatWasRemoved) {
  Properties erased = readMetadata(fullCarrier(), {}), removed = erased;
  for (const char* group : {"{Exif}", "{IPTC}"}) {
    erased.tree.erase(group);
    removed.remove(group);
  }
  const auto a = writeMetadata(erased, {}), b = writeMetadata(removed, {});
  ASSERT_TRUE(a && b);
  EXPECT_EQ(a->exif, b->exif);
  EXPECT_EQ(a->xmp, b->xmp);
  EXPECT_TRUE(a->iptc.empty() && b->iptc.empty());
}

TEST(Metadata, KeysOutsideTheGroupsLeaveTheCarrierAlone) {
  Properties properties =
      readMetadata(fullCarrier(), {{"PixelWidth", 2}, {"{PNG}", Dictionary{{"Gamma", 0.5}}}});
  const auto before = properties.carrier;
  EXPECT_TRUE(properties.remove("PixelWidth"));
  EXPECT_EQ(properties.carrier, before);
  EXPECT_TRUE(properties.remove("{PNG}"));
  EXPECT_EQ(properties.carrier->exif, before->exif);
  EXPECT_EQ(properties.carrier->xmp, before->xmp);
}

TEST(Metadata, IsEmptyWhenNothingIsLeftToWrite) {
  EXPECT_TRUE(Properties().empty());
  Properties plain = readMetadata({}, {{"PixelWidth", 2}});
  EXPECT_FALSE(plain.empty());
  EXPECT_EQ(plain.carrier, nullptr);
  plain.remove("PixelWidth");
  EXPECT_TRUE(plain.empty());

  const test::ExifBuilder b(false);
  Carrier carrier;
  carrier.exif = b.build({b.text(0x010F, "Maker"), b.directory(0x8769, {b.shorts(0xA001, {1})})});
  Properties properties = readMetadata(carrier, {});
  properties.remove("{TIFF}");
  EXPECT_FALSE(properties.empty());
  properties.remove("{Exif}");
  EXPECT_TRUE(properties.empty());
}

TEST(Metadata, WhatNoKeyNamesKeepsPropertiesFromBeingEmpty) {
  const test::ExifBuilder b(false);
  Carrier carrier;
  carrier.exif = b.build({b.text(0xC000, "private")});
  const Properties properties = readMetadata(carrier, {});
  EXPECT_TRUE(properties.tree.empty());
  EXPECT_FALSE(properties.empty());
  EXPECT_EQ(writeMetadata(properties, {})->exif, carrier.exif);
}

TEST(Metadata, ADamagedBlockLeavesTheOthersReadable) {
  Carrier carrier = fullCarrier();
  carrier.exif = Bytes(100, 7);
  const Properties properties = readMetadata(carrier, {{"PixelWidth", 2}});
  EXPECT_TRUE(properties.tree.contains("{IPTC}"));
  EXPECT_FALSE(writeMetadata(properties, {}));
}

TEST(Metadata, BlocksAreMadeForATreeWithoutACarrier) {
  const Properties properties{
      {{"{IPTC}", Dictionary{{"City", "K\u00f6ln"}}}, {"{Exif}", Dictionary{{"FNumber", 2.8}}}}, nullptr};
  const auto blocks = writeMetadata(properties, {});
  ASSERT_TRUE(blocks);
  Carrier carrier;
  carrier.exif = blocks->exif;
  carrier.iptc = blocks->iptc;
  EXPECT_TRUE(readMetadata(carrier, {}).tree == properties.tree);
}

TEST(Metadata, ExiftoolFindsAWholeJpegSound) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const Bytes jpeg = test::jpegWithTags({"-Make=Acme", "-Orientation#=6", "-GPSLatitude=48.5",
                                         "-GPSLatitudeRef=N", "-IPTC:City=C", "-IPTC:Keywords=k",
                                         "-XMP-dc:Title=T", "-ExposureTime=1/60", "-ColorSpace#=1"});
  Carrier carrier;
  carrier.exif = test::blockOf(jpeg, "EXIF");
  carrier.xmp = test::blockOf(jpeg, "XMP");
  carrier.iptc = test::blockOf(jpeg, "IPTC");
  Properties properties = readMetadata(carrier, {});
  properties.tree.at("{Exif}").get<Dictionary>()->erase("ColorSpace");
  const auto blocks = writeMetadata(properties, {2, 1});
  ASSERT_TRUE(blocks);
  Bytes result = test::jpegWithTags({});
  result = test::withSegment(result, 0xED, std::string("Photoshop 3.0\0", 14),
                             joinPhotoshop(blocks->iptc, blocks->photoshopResources));
  result = test::withSegment(result, 0xE1, std::string("http://ns.adobe.com/xap/1.0/\0", 29), blocks->xmp);
  result = test::withSegment(result, 0xE1, std::string("Exif\0\0", 6), blocks->exif);
  auto before = test::exiftoolTags(jpeg, "jpg"), after = test::exiftoolTags(result, "jpg");
  EXPECT_EQ(before.erase("ExifIFD:ColorSpace"), 1u);
  EXPECT_EQ(after.at("GPS:GPSLatitude"), "48.5");
  for (auto* tags : {&before, &after}) {
    std::erase_if(*tags, [](const auto& tag) {
      return tag.first.starts_with("System:") || tag.first == "File:CurrentIPTCDigest";
    });
  }
  EXPECT_EQ(before, after);
}

TEST(StatedDensity, AsksTheTopLevelThenTiffThenJfif) {
  const auto tiff = Value(Dictionary{{"XResolution", 100.0}, {"YResolution", 50.0}, {"ResolutionUnit", 3}});
  const auto jfif = Value(Dictionary{{"XDensity", 96}, {"YDensity", 48}, {"DensityUnit", 1}});
  Dictionary tree{{"{JFIF}", jfif}};
  EXPECT_EQ(statedDensity(tree)->x, 96);
  EXPECT_EQ(statedDensity(tree)->y, 48);
  tree.emplace("{TIFF}", tiff);
  EXPECT_EQ(statedDensity(tree)->x, 254);
  tree.emplace("DPIWidth", 300);
  EXPECT_EQ(statedDensity(tree)->x, 300);
  EXPECT_EQ(statedDensity(tree)->y, 300);
  EXPECT_FALSE(statedDensity({{"{JFIF}", Dictionary{{"XDensity", 1}, {"YDensity", 1}, {"DensityUnit", 0}}}}));
  EXPECT_FALSE(statedDensity({{"DPIWidth", 0}}));
}

}  // namespace ostra
