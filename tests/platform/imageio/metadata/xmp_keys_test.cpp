#include "platform/imageio/metadata/xmp_keys.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/metadata/xmp.h"
#include "tests/platform/imageio/metadata/exif_builder.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

/// A key, the tag by which exiftool knows its property, what is given to exiftool, and what is read.
struct Row {
  const char* group;
  const char* key;
  const char* tag;
  const char* given;
  Value value;
};

Value list(std::initializer_list<Value> values) { return Array(values); }

const std::vector<Row>& rows() {
  static const std::vector<Row> all = {
      {"{TIFF}", "Make", "XMP-tiff:Make", "Acme", "Acme"},
      {"{TIFF}", "Model", "XMP-tiff:Model", "One", "One"},
      {"{TIFF}", "ImageDescription", "XMP-tiff:ImageDescription", "a <tower>", "a <tower>"},
      {"{TIFF}", "ImageDescription", "XMP-dc:Description", "by \"day\"", "by \"day\""},
      {"{TIFF}", "Software", "XMP-tiff:Software", "soft", "soft"},
      {"{TIFF}", "Software", "XMP-xmp:CreatorTool", "a tool", "a tool"},
      {"{TIFF}", "DateTime", "XMP-tiff:DateTime", "2024:02:03 04:05:06", "2024:02:03 04:05:06"},
      {"{TIFF}", "DateTime", "XMP-xmp:ModifyDate", "2024:02:03 04:05:06+02:00", "2024:02:03 04:05:06"},
      {"{TIFF}", "Artist", "XMP-tiff:Artist", "Ann", "Ann"},
      {"{TIFF}", "Artist", "XMP-dc:Creator", "Bob", "Bob"},
      {"{TIFF}", "Copyright", "XMP-tiff:Copyright", "(c) Ann", "(c) Ann"},
      {"{TIFF}", "Copyright", "XMP-dc:Rights", "(c) & Bob", "(c) & Bob"},
      {"{Exif}", "UserComment", "XMP-exif:UserComment", "said", "said"},
      {"{Exif}", "DateTimeOriginal", "XMP-exif:DateTimeOriginal", "2024:02:03 04:05:07",
       "2024:02:03 04:05:07"},
      {"{Exif}", "DateTimeOriginal", "XMP-photoshop:DateCreated", "2024:02:03 04:05:08",
       "2024:02:03 04:05:08"},
      {"{Exif}", "DateTimeDigitized", "XMP-exif:DateTimeDigitized", "2024:02:03 04:05:09",
       "2024:02:03 04:05:09"},
      {"{Exif}", "DateTimeDigitized", "XMP-xmp:CreateDate", "2024:02:03 04:05:10", "2024:02:03 04:05:10"},
      {"{ExifAux}", "LensInfo", "XMP-aux:LensInfo", "24 70 2.8 4", list({24.0, 70.0, 2.8, 4.0})},
      {"{ExifAux}", "LensModel", "XMP-aux:Lens", "50mm <f/1.8>", "50mm <f/1.8>"},
      {"{ExifAux}", "SerialNumber", "XMP-aux:SerialNumber", "123", "123"},
      {"{ExifAux}", "LensID", "XMP-aux:LensID", "42", 42},
      {"{ExifAux}", "LensSerialNumber", "XMP-aux:LensSerialNumber", "456", "456"},
      {"{ExifAux}", "ImageNumber", "XMP-aux:ImageNumber", "789", 789},
      {"{ExifAux}", "FlashCompensation", "XMP-aux:FlashCompensation", "-1.5", -1.5},
      {"{ExifAux}", "OwnerName", "XMP-aux:OwnerName", "Ann", "Ann"},
      {"{ExifAux}", "Firmware", "XMP-aux:Firmware", "1.0", "1.0"},
      {"{IPTC}", "ObjectAttributeReference", "XMP-iptcCore:IntellectualGenre", "news", list({"news"})},
      {"{IPTC}", "ObjectName", "XMP-dc:Title", "T\u00f6wer", "T\u00f6wer"},
      {"{IPTC}", "Urgency", "XMP-photoshop:Urgency", "5", "5"},
      {"{IPTC}", "SubjectReference", "XMP-iptcCore:SubjectCode", "01", list({"01"})},
      {"{IPTC}", "Category", "XMP-photoshop:Category", "ART", "ART"},
      {"{IPTC}", "SupplementalCategory", "XMP-photoshop:SupplementalCategories", "more", list({"more"})},
      {"{IPTC}", "Keywords", "XMP-dc:Subject", "iron", list({"iron"})},
      {"{IPTC}", "SpecialInstructions", "XMP-photoshop:Instructions", "none", "none"},
      {"{IPTC}", "DateCreated", "XMP-photoshop:DateCreated", "2024:02:03 04:05:06", "20240203"},
      {"{IPTC}", "TimeCreated", "XMP-photoshop:DateCreated", "2024:02:03 04:05:06+02:00", "040506+0200"},
      {"{IPTC}", "Byline", "XMP-dc:Creator", "Ann", list({"Ann"})},
      {"{IPTC}", "BylineTitle", "XMP-photoshop:AuthorsPosition", "staff", list({"staff"})},
      {"{IPTC}", "City", "XMP-photoshop:City", "Paris", "Paris"},
      {"{IPTC}", "SubLocation", "XMP-iptcCore:Location", "Champ", "Champ"},
      {"{IPTC}", "Province/State", "XMP-photoshop:State", "IdF", "IdF"},
      {"{IPTC}", "Country/PrimaryLocationCode", "XMP-iptcCore:CountryCode", "FRA", "FRA"},
      {"{IPTC}", "Country/PrimaryLocationName", "XMP-photoshop:Country", "France", "France"},
      {"{IPTC}", "OriginalTransmissionReference", "XMP-photoshop:TransmissionReference", "job", "job"},
      {"{IPTC}", "Headline", "XMP-photoshop:Headline", "A tower", "A tower"},
      {"{IPTC}", "Credit", "XMP-photoshop:Credit", "me", "me"},
      {"{IPTC}", "Source", "XMP-photoshop:Source", "here", "here"},
      {"{IPTC}", "CopyrightNotice", "XMP-dc:Rights", "(c)", "(c)"},
      {"{IPTC}", "Caption/Abstract", "XMP-dc:Description", "by day", "by day"},
      {"{IPTC}", "Writer/Editor", "XMP-photoshop:CaptionWriter", "Cy", list({"Cy"})},
      {"{IPTC}", "CreatorContactInfo", "XMP-iptcCore:CreatorCity", "Rome", Dictionary{{"CiAdrCity", "Rome"}}},
      {"{IPTC}", "Scene", "XMP-iptcCore:Scene", "011000", list({"011000"})},
      {"{IPTC}", "UsageTerms", "XMP-xmpRights:UsageTerms", "ask", "ask"},
      {"{IPTC}", "StarRating", "XMP-xmp:Rating", "4", 4},
  };
  return all;
}

/// The rows in as few packets as can hold them: no property and no key twice in one.
std::vector<std::vector<const Row*>> batches() {
  std::vector<std::vector<const Row*>> all;
  for (const Row& row : rows()) {
    const auto isFree = [&](const std::vector<const Row*>& batch) {
      return std::none_of(batch.begin(), batch.end(), [&](const Row* other) {
        const bool sameKey = row.group == std::string(other->group) && row.key == std::string(other->key);
        return sameKey || row.tag == std::string(other->tag);
      });
    };
    auto batch = std::find_if(all.begin(), all.end(), isFree);
    if (batch == all.end()) batch = all.emplace(all.end());
    batch->push_back(&row);
  }
  return all;
}

Bytes packetWith(const std::vector<std::string>& arguments) {
  return test::blockOf(test::jpegWithTags(arguments), "XMP");
}

Properties readPacket(const Bytes& packet) {
  Carrier carrier;
  carrier.xmp = packet;
  return readMetadata(carrier, {});
}

bool isTold(const Dictionary& tree, const Row& row) {
  const auto group = tree.find(row.group);
  if (group == tree.end()) return false;
  const auto* values = group->second.get<Dictionary>();
  const auto value = values->find(row.key);
  return value != values->end() && value->second == row.value;
}

}  // namespace

TEST(XmpKeys, AreAllInTheTable) {
  for (const XmpKey& key : xmpKeys()) {
    EXPECT_TRUE(std::any_of(rows().begin(), rows().end(), [&](const Row& row) {
      return key.group == row.group && key.key == row.key;
    })) << key.key;
  }
}

TEST(XmpKeys, AreReadInTheFormOfTheirGroup) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  for (const bool asAttributes : {false, true}) {
    for (const auto& batch : batches()) {
      std::vector<std::string> arguments;
      if (asAttributes) arguments = {"-api", "Compact=Shorthand"};
      for (const Row* row : batch) arguments.push_back("-" + std::string(row->tag) + "#=" + row->given);
      const Dictionary tree = readPacket(packetWith(arguments)).tree;
      for (const Row* row : batch) EXPECT_TRUE(isTold(tree, *row)) << row->tag << " as " << row->key;
    }
  }
}

TEST(XmpKeys, ThatAreToldNowhereElseAreWritten) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  Dictionary tree;
  std::vector<const Row*> written;
  for (const XmpKey& key : xmpKeys()) {
    if (!key.onlyHere) continue;
    for (const Row& row : rows()) {
      if (key.group != row.group || key.key != row.key) continue;
      tree.emplace(row.group, Dictionary()).first->second.get<Dictionary>()->emplace(row.key, row.value);
      written.push_back(&row);
    }
  }
  ASSERT_EQ(written.size(), 13u);
  const auto blocks = writeMetadata({tree, nullptr}, {});
  ASSERT_TRUE(blocks);
  const auto shown = test::exiftoolTags(blocks->xmp, "xmp");
  EXPECT_FALSE(shown.contains("ExifTool:Warning"));
  for (const Row* row : written) {
    ASSERT_TRUE(shown.contains(row->tag)) << row->tag;
    EXPECT_EQ(shown.at(row->tag), row->given) << row->tag;
    EXPECT_TRUE(isTold(readPacket(blocks->xmp).tree, *row)) << row->key;
  }
}

TEST(XmpKeys, FillWhatNoOtherBlockTellsAndAreNotWrittenTwice) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const Bytes packet = packetWith({"-XMP-tiff:Make=Elsewhere", "-XMP-dc:Creator=Ann", "-XMP-dc:Creator=Bob",
                                   "-XMP-dc:Title=T", "-XMP-xmp:Rating=4"});
  const Properties alone = readPacket(packet);
  EXPECT_TRUE(alone.tree.at("{TIFF}") == Value(Dictionary{{"Make", "Elsewhere"}, {"Artist", "Ann; Bob"}}));
  const auto blocks = writeMetadata(alone, {2, 1});
  ASSERT_TRUE(blocks);
  EXPECT_TRUE(blocks->exif.empty());
  EXPECT_TRUE(blocks->iptc.empty());
  EXPECT_EQ(blocks->xmp, packet);
  Carrier carrier;
  carrier.xmp = packet;
  carrier.exif = test::cameraBlock(false);
  const Properties both = readMetadata(carrier, {});
  EXPECT_FALSE(both.tree.at("{TIFF}").get<Dictionary>()->at("Make") == Value("Elsewhere"));
}

TEST(XmpKeys, ARemovedOrChangedKeyLosesItsTwin) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const struct {
    const char *group, *key, *tag, *given;
  } twins[] = {{"{Exif}", "FNumber", "XMP-exif:FNumber", "2.8"},
               {"{Exif}", "FocalLenIn35mmFilm", "XMP-exif:FocalLengthIn35mmFormat", "75"},
               {"{Exif}", "ISOSpeedRatings", "XMP-exifEX:PhotographicSensitivity", "400"},
               {"{Exif}", "LensModel", "XMP-exifEX:LensModel", "L"},
               {"{GPS}", "Latitude", "XMP-exif:GPSLatitude", "48.5"},
               {"{GPS}", "LatitudeRef", "XMP-exif:GPSLatitude", "48.5"},
               {"{GPS}", "DateStamp", "XMP-exif:GPSDateTime", "2024:02:03 04:05:06Z"},
               {"{TIFF}", "HostComputer", "XMP-tiff:HostComputer", "h"},
               {"{IPTC}", "City", "XMP-photoshop:City", "Paris"}};
  for (const auto& twin : twins) {
    const Bytes packet =
        packetWith({"-" + std::string(twin.tag) + "#=" + twin.given, "-XMP-dc:Format=image/x"});
    ASSERT_TRUE(test::exiftoolTags(packet, "xmp").contains(twin.tag) ||
                twin.tag == std::string("XMP-tiff:HostComputer"))
        << twin.tag;
    const Dictionary told{{twin.group, Dictionary{{twin.key, "before"}}}};
    const Dictionary removed{{twin.group, Dictionary()}},
        changed{{twin.group, Dictionary{{twin.key, "after"}}}};
    for (const Dictionary& now : {removed, changed}) {
      const auto tags = test::exiftoolTags(withTreeChanges(packet, told, now), "xmp");
      EXPECT_FALSE(tags.contains(twin.tag)) << twin.key;
      EXPECT_TRUE(tags.contains("XMP-dc:Format")) << twin.key;
    }
    EXPECT_EQ(withTreeChanges(packet, told, told), packet);
  }
}

TEST(XmpKeys, TheDensityAndThePixelSizeAreNotContradicted) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const Bytes packet = packetWith({"-XMP-exif:ExifImageWidth=11", "-XMP-exif:ExifImageHeight=12",
                                   "-XMP-tiff:XResolution=72", "-XMP-tiff:ResolutionUnit#=2"});
  Properties properties = readPacket(packet);
  properties.tree.insert_or_assign("DPIWidth", 300.0);
  const auto blocks = writeMetadata(properties, {.width = 4000, .height = 3});
  ASSERT_TRUE(blocks);
  const auto tags = test::exiftoolTags(blocks->xmp, "xmp");
  EXPECT_EQ(tags.at("XMP-exif:ExifImageWidth"), "4000");
  EXPECT_EQ(tags.at("XMP-exif:ExifImageHeight"), "3");
  EXPECT_FALSE(tags.contains("XMP-tiff:XResolution"));
}

TEST(XmpKeys, APartOfADateIsNoDate) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const Dictionary tree = readPacket(packetWith({"-XMP-photoshop:DateCreated=2024"})).tree;
  EXPECT_FALSE(tree.contains("{IPTC}"));
  EXPECT_FALSE(tree.contains("{Exif}"));
}

TEST(IptcDigest, IsTheOneThatExiftoolComputes) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const auto blocks = writeMetadata({{{"{IPTC}", Dictionary{{"City", "K\u00f6ln"}}}}, nullptr}, {});
  ASSERT_TRUE(blocks);
  const Bytes jpeg = test::withSegment(test::jpegWithTags({}), 0xED, std::string("Photoshop 3.0\0", 14),
                                       joinPhotoshop(blocks->iptc, blocks->photoshopResources));
  const auto tags = test::exiftoolTags(jpeg, "jpg");
  ASSERT_TRUE(tags.contains("File:CurrentIPTCDigest"));
  EXPECT_EQ(tags.at("Photoshop:IPTCDigest"), tags.at("File:CurrentIPTCDigest"));
}

}  // namespace ostra
