#include "platform/foundation/property_list.h"

#include <limits>

#include <gtest/gtest.h>

#include "platform/foundation/bundle.h"
#include "platform/foundation/error.h"
#include "platform/foundation/service.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

Bytes bytes(std::string_view text) { return Bytes(text.begin(), text.end()); }

Bytes list(std::string_view body) {
  return bytes("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">" + std::string(body) +
               "</plist>");
}

std::int64_t codeOfReading(const Bytes& data) {
  try {
    readPropertyList(data);
  } catch (const NSError& error) {
    return error.code();
  }
  return 0;
}

const Value kEveryKind = Dictionary{
    {"truth", true},
    {"least", std::numeric_limits<std::int64_t>::min()},
    {"negative", -5},
    {"most", std::numeric_limits<std::int64_t>::max()},
    {"real", 0.25},
    {"text", "Äpfel & <Birnen> “x”"},
    {"data", Bytes{0, 255, 10}},
    {"array", Array{1, "two", Array{}, Dictionary{}}},
};

TEST(PropertyList, EveryKindOfValueComesBack) {
  EXPECT_EQ(readPropertyList(writePropertyList(kEveryKind)), kEveryKind);
}

TEST(PropertyList, OursIsReadByAnotherProgram) {
  OSTRA_NEEDS_PROGRAM("python3");
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("list"), writePropertyList(kEveryKind));
  const auto result = test::runProgram(
      {"python3", "-c",
       "import plistlib,sys; p=plistlib.load(open(sys.argv[1],'rb')); "
       "assert p['text']=='Äpfel & <Birnen> “x”' and p['negative']==-5 and p['least']==-2**63, p; "
       "assert p['most']==2**63-1 and p['real']==0.25 and p['data']==bytes([0,255,10]), p; "
       "assert p['truth'] is True and p['array']==[1,'two',[],{}], p",
       folder.path("list")});
  EXPECT_EQ(result.status, 0) << result.errors;
}

TEST(PropertyList, BinaryOfAnotherProgramIsRead) {
  OSTRA_NEEDS_PROGRAM("python3");
  const test::TemporaryFolder folder;
  const auto result =
      test::runProgram({"python3", "-c",
                        "import plistlib,sys; plistlib.dump({'k':'srgb-jpg','n':-5,'l':[True,1.5,b'x']}, "
                        "open(sys.argv[1],'wb'), "
                        "fmt=plistlib.FMT_BINARY)",
                        folder.path("list")});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(readPropertyList(test::readFile(folder.path("list"))),
            Value(Dictionary{{"k", "srgb-jpg"}, {"n", -5}, {"l", Array{true, 1.5, Bytes{'x'}}}}));
}

TEST(PropertyList, LeavesDatesOut) {
  const Value read =
      readPropertyList(list("<dict><key>d</key><date>2024-01-01T00:00:00Z</date><key>a</key><true/></dict>"));
  EXPECT_EQ(read, Value(Dictionary{{"a", true}}));
}

TEST(PropertyList, RefusesAnythingElse) {
  EXPECT_EQ(codeOfReading({}), NSFileReadCorruptFileError);
  EXPECT_EQ(codeOfReading(bytes("hello")), NSFileReadCorruptFileError);
  EXPECT_EQ(codeOfReading(bytes("bplist00\xFF\xFF\xFF")), NSFileReadCorruptFileError);
  EXPECT_EQ(codeOfReading(list("<dict><key>a</key>")), NSFileReadCorruptFileError);
  EXPECT_EQ(codeOfReading(list("<date>2024-01-01T00:00:00Z</date>")), NSFileReadCorruptFileError);
}

TEST(PropertyList, RefusesOneThatIsNestedWithoutReason) {
  std::string deep;
  for (int i = 0; i < 200; ++i) deep += "<array>";
  for (int i = 0; i < 200; ++i) deep += "</array>";
  EXPECT_EQ(codeOfReading(list(deep)), NSFileReadCorruptFileError);
}

TEST(Bundle, InfoIsThePropertyListInItsFolder) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("Info.plist"), writePropertyList(Dictionary{{"NIVEQuickAction", "invert"}}));
  PropertyListBundle bundle(readBundleInfo(URL::fileURLWithPath(folder.path())));
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("NIVEQuickAction"), Value("invert"));
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("absent"), std::nullopt);
  const Service<NSBundle>::Override override(bundle);
  EXPECT_EQ(NSBundle::mainBundle().objectForInfoDictionaryKey("NIVEQuickAction"), Value("invert"));
}

TEST(Bundle, WithoutAPropertyListHoldsNothing) {
  EXPECT_EQ(NSBundle::mainBundle().objectForInfoDictionaryKey("NIVEQuickAction"), std::nullopt);
}

std::string sentenceOfReading(const std::string& folder) {
  try {
    readBundleInfo(URL::fileURLWithPath(folder));
  } catch (const NSError& error) {
    return error.localizedDescription();
  }
  return {};
}

TEST(Bundle, ThatCannotBeReadSaysWhy) {
  const test::TemporaryFolder folder;
  EXPECT_EQ(sentenceOfReading(folder.path()),
            "The file “Info.plist” couldn’t be opened because there is no such file.");
  for (const Bytes& bad : {bytes("junk"), list("<string>x</string>")}) {
    test::writeFile(folder.path("Info.plist"), bad);
    EXPECT_EQ(sentenceOfReading(folder.path()),
              "The file “Info.plist” couldn’t be opened because it isn’t in the correct format.");
  }
}

}  // namespace
}  // namespace ostra
