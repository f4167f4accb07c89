#include "platform/imageio/metadata/iptc.h"

#include <gtest/gtest.h>

#include "platform/imageio/metadata/photoshop.h"
#include "tests/platform/imageio/metadata/exif_builder.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

Bytes dataSet(int record, int number, std::string_view value) {
  Bytes bytes{0x1C, static_cast<std::uint8_t>(record), static_cast<std::uint8_t>(number),
              static_cast<std::uint8_t>(value.size() >> 8), static_cast<std::uint8_t>(value.size() & 0xFF)};
  for (const char c : value) bytes.push_back(static_cast<std::uint8_t>(c));
  return bytes;
}

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Dictionary groupIn(const Bytes& records) {
  Dictionary tree;
  readIptc(records, tree);
  const auto found = tree.find("{IPTC}");
  return found == tree.end() ? Dictionary() : *found->second.get<Dictionary>();
}

const Bytes kUtf8Mark = dataSet(1, 90, "\x1B%G");
const Bytes kVersion = dataSet(2, 0, std::string_view("\0\4", 2));

struct Row {
  const char* key;
  const char* tag;
  bool repeatable = false;
};
constexpr Row kRows[] = {{"ObjectTypeReference", "ObjectTypeReference"},
                         {"ObjectAttributeReference", "ObjectAttributeReference", true},
                         {"ObjectName", "ObjectName"},
                         {"EditStatus", "EditStatus"},
                         {"EditorialUpdate", "EditorialUpdate"},
                         {"Urgency", "Urgency"},
                         {"SubjectReference", "SubjectReference", true},
                         {"Category", "Category"},
                         {"SupplementalCategory", "SupplementalCategories", true},
                         {"FixtureIdentifier", "FixtureIdentifier"},
                         {"Keywords", "Keywords", true},
                         {"ContentLocationCode", "ContentLocationCode", true},
                         {"ContentLocationName", "ContentLocationName", true},
                         {"ReleaseDate", "ReleaseDate"},
                         {"ReleaseTime", "ReleaseTime"},
                         {"ExpirationDate", "ExpirationDate"},
                         {"ExpirationTime", "ExpirationTime"},
                         {"SpecialInstructions", "SpecialInstructions"},
                         {"ActionAdvised", "ActionAdvised"},
                         {"ReferenceService", "ReferenceService", true},
                         {"ReferenceDate", "ReferenceDate", true},
                         {"ReferenceNumber", "ReferenceNumber", true},
                         {"DateCreated", "DateCreated"},
                         {"TimeCreated", "TimeCreated"},
                         {"DigitalCreationDate", "DigitalCreationDate"},
                         {"DigitalCreationTime", "DigitalCreationTime"},
                         {"OriginatingProgram", "OriginatingProgram"},
                         {"ProgramVersion", "ProgramVersion"},
                         {"ObjectCycle", "ObjectCycle"},
                         {"Byline", "By-line", true},
                         {"BylineTitle", "By-lineTitle", true},
                         {"City", "City"},
                         {"SubLocation", "Sub-location"},
                         {"Province/State", "Province-State"},
                         {"Country/PrimaryLocationCode", "Country-PrimaryLocationCode"},
                         {"Country/PrimaryLocationName", "Country-PrimaryLocationName"},
                         {"OriginalTransmissionReference", "OriginalTransmissionReference"},
                         {"Headline", "Headline"},
                         {"Credit", "Credit"},
                         {"Source", "Source"},
                         {"CopyrightNotice", "CopyrightNotice"},
                         {"Contact", "Contact", true},
                         {"Caption/Abstract", "Caption-Abstract"},
                         {"Writer/Editor", "Writer-Editor", true},
                         {"ImageType", "ImageType"},
                         {"ImageOrientation", "ImageOrientation"},
                         {"LanguageIdentifier", "LanguageIdentifier"}};

/// Digits, which exiftool shows alike for text, dates and numbers.
std::string valueOf(const Row& row) { return std::to_string(10 + (&row - kRows)); }

}  // namespace

TEST(Iptc, EveryKeyIsWrittenAsTheDataSetThatExiftoolKnowsByItsMeaning) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  Dictionary group;
  for (const Row& row : kRows) {
    group.emplace(row.key, row.repeatable ? Value(Array{valueOf(row)}) : Value(valueOf(row)));
  }
  const Bytes records = patchIptc({}, {}, group);
  EXPECT_TRUE(groupIn(records) == group);
  const Bytes jpeg = test::withSegment(test::jpegWithTags({}), 0xED, std::string("Photoshop 3.0\0", 14),
                                       joinPhotoshop(records, {}));
  const auto tags = test::exiftoolTags(jpeg, "jpg");
  EXPECT_EQ(tags.at("IPTC:CodedCharacterSet"), ".%G");  // ESC % G
  EXPECT_EQ(tags.at("IPTC:ApplicationRecordVersion"), "4");
  for (const Row& row : kRows) {
    const auto found = tags.find("IPTC:" + std::string(row.tag));
    ASSERT_NE(found, tags.end()) << row.tag;
    EXPECT_EQ(found->second.substr(0, 2), valueOf(row)) << row.tag;
  }
}

TEST(Iptc, ReadsWhatExiftoolWrote) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const Dictionary expected{
      {"Keywords", Array{"one", "two"}}, {"City", "K\u00f6ln"}, {"Byline", Array{"Ann"}}};
  const std::vector<std::string> tags{"-IPTC:Keywords=one", "-IPTC:Keywords=two", "-IPTC:City=K\u00f6ln",
                                      "-IPTC:By-line=Ann"};
  EXPECT_TRUE(groupIn(test::blockOf(test::jpegWithTags(tags), "IPTC")) == expected);
  auto utf8 = tags;
  utf8.insert(utf8.begin(), {"-codedcharacterset=utf8"});
  EXPECT_TRUE(groupIn(test::blockOf(test::jpegWithTags(utf8), "IPTC")) == expected);
}

TEST(Iptc, ReadsTextInTheCharactersThatTheRecordsDeclare) {
  const Value city("K\u00f6ln");
  EXPECT_TRUE(groupIn(dataSet(2, 90, "K\xF6ln")).at("City") == city);
  EXPECT_TRUE(groupIn(dataSet(2, 90, "K\u00f6ln")).at("City") == city);
  EXPECT_TRUE(groupIn(joined({kUtf8Mark, dataSet(2, 90, "K\u00f6ln")})).at("City") == city);
  EXPECT_TRUE(groupIn(joined({dataSet(1, 90, "\x1B.A"), dataSet(2, 90, "\xC3\xB6")})).at("City") ==
              Value("\u00c3\u00b6"));
}

TEST(Iptc, AnUnchangedGroupKeepsEveryByte) {
  const Bytes records =
      joined({kVersion, dataSet(2, 25, "a"), dataSet(2, 199, "private"), {0x1C, 2}, Bytes(3)});
  const Dictionary group = groupIn(records);
  EXPECT_EQ(patchIptc(records, group, group), records);
}

TEST(Iptc, AChangeTouchesItsOwnDataSetsOnly) {
  const Bytes records = joined({kVersion, dataSet(2, 25, "a"), dataSet(2, 5, "name"), dataSet(2, 25, "b"),
                                dataSet(2, 199, "private"), dataSet(3, 1, "other"), Bytes(2)});
  const Dictionary group = groupIn(records);
  Dictionary removed = group;
  removed.erase("Keywords");
  EXPECT_EQ(patchIptc(records, group, removed),
            joined({kVersion, dataSet(2, 5, "name"), dataSet(2, 199, "private"), dataSet(3, 1, "other"),
                    Bytes(2)}));
  Dictionary changed = group;
  changed.insert_or_assign("Keywords", Array{"c"});
  EXPECT_EQ(patchIptc(records, group, changed),
            joined({kVersion, dataSet(2, 5, "name"), dataSet(2, 199, "private"), dataSet(2, 25, "c"),
                    dataSet(3, 1, "other"), Bytes(2)}));
}

TEST(Iptc, NewTextTurnsOldRecordsToUtf8WhereItMust) {
  const Bytes records = joined({kVersion, dataSet(2, 90, "K\xF6ln"), dataSet(2, 199, "\xF6")});
  const Dictionary group = groupIn(records);
  Dictionary changed = group;
  changed.insert_or_assign("Headline", "\u20ac");
  EXPECT_EQ(patchIptc(records, group, changed), joined({kUtf8Mark, kVersion, dataSet(2, 90, "K\u00f6ln"),
                                                        dataSet(2, 199, "\xF6"), dataSet(2, 105, "\u20ac")}));
  changed.insert_or_assign("Headline", "plain");
  EXPECT_EQ(patchIptc(records, group, changed), joined({records, dataSet(2, 105, "plain")}));
}

TEST(Iptc, ReadsAndWritesLongDataSets) {
  const std::string caption(40000, 'x');
  const Bytes records = patchIptc({}, {}, {{"Caption/Abstract", caption}});
  EXPECT_TRUE(groupIn(records).at("Caption/Abstract") == Value(caption));
}

TEST(Iptc, StopsAtTheFirstBytesThatAreNoDataSet) {
  EXPECT_EQ(groupIn(joined({dataSet(2, 90, "City"), {0, 0}, dataSet(2, 5, "lost")})).size(), 1u);
  Bytes cut = joined({dataSet(2, 90, "City"), dataSet(2, 5, "name")});
  cut.pop_back();
  EXPECT_EQ(groupIn(cut).size(), 1u);
  EXPECT_TRUE(groupIn({0x1C, 2, 5, 0xFF, 0xFF, 1, 2}).empty());
  EXPECT_TRUE(groupIn({0x1C, 2, 5, 0x80, 0x04, 0xFF, 0xFF, 0xFF, 0xFF}).empty());
}

}  // namespace ostra
