#include "tests/support/program.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using test::ProgramOptions;
using test::ProgramResult;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// The program as a user has it, with a cache folder of the test's own.
class ProgramTest : public testing::Test {
 protected:
  ProgramResult ostra(std::vector<std::string> arguments, ProgramOptions options = {}) {
    arguments.insert(arguments.begin(), OSTRA_PROGRAM);
    options.environment.push_back("XDG_CACHE_HOME=" + cache_.path());
    return test::runProgram(arguments, options);
  }

  test::TemporaryFolder cache_, folder_;
};

TEST_F(ProgramTest, PrintsItsVersionAndItsHelp) {
  const ProgramResult version = ostra({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.output, StartsWith("ostra "));
  const ProgramResult help = ostra({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, HasSubstr("ACTION FILE..."));
  EXPECT_EQ(help.errors + version.errors, "");
}

TEST_F(ProgramTest, ListsItsActions) {
  const ProgramResult result = ostra({"list"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "convert-color-profile  Convert Color Profile\n"
            "grayscale              Convert to Grayscale\n"
            "grayscale-jpg          Convert to Grayscale .JPG\n"
            "invert                 Invert Color\n"
            "jpg                    Convert to JPG\n"
            "srgb                   Convert to sRGB\n"
            "srgb-jpg               Convert to sRGB .JPG\n");
}

TEST_F(ProgramTest, SaysOnceThatNothingWasSelected) {
  const ProgramResult result = ostra({"grayscale"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "ostra: No image was selected.\n");
}

TEST_F(ProgramTest, RefusesAnActionThatIsNone) {
  const ProgramResult result = ostra({"sepia", "a.png"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "ostra: There is no action “sepia”. See “ostra list”.\n");
}

TEST_F(ProgramTest, SaysHowToNameAProfileWhereNobodyCanBeAsked) {
  const ProgramResult result = ostra({"--ui=none", "convert-color-profile", "a.png"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(
      result.errors,
      "ostra: Nobody can be asked for the profile here. Name it with “--profile NAME”; “ostra profiles” "
      "lists the names.\n");
}

TEST_F(ProgramTest, TakesAProfileForTheProfileConversionOnly) {
  const ProgramResult result = ostra({"--profile=Display P3", "invert", "a.png"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "ostra: --profile is for “convert-color-profile” only.\n");
}

// The handler refuses this kind, which is the panel's; the host tells the user.
TEST_F(ProgramTest, SaysOnceThatABundleIsNotConfigured) {
  std::filesystem::create_directory(folder_.path("b"));
  test::writeFile(
      folder_.path("b/Info.plist"),
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>NIVEQuickAction</key><string>sepia</string>"
      "<key>NSExtension</key><dict><key>NSExtensionPrincipalClass</key>"
      "<string>OstraQuickActionRequestHandler</string></dict></dict></plist>");
  const ProgramResult result = ostra({"--bundle", folder_.path("b"), "a.png"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors,
            "ostra: This Quick Action bundle does not say which conversion it is (NIVEQuickAction).\n");
}

TEST_F(ProgramTest, ReportsEachFileThatFailedOnceAndGoesOnTillTheLast) {
  test::writeFile(folder_.path("text.png"), "not a picture");
  ASSERT_EQ(mkfifo(folder_.path("pipe.png").c_str(), 0600), 0);
  const ProgramResult result =
      ostra({"invert", folder_.path("missing.png"), folder_.path("pipe.png"), folder_.path("text.png")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "Invert Color could not convert every image\n"
            "  missing.png: The file “missing.png” couldn’t be opened because there is no such file.\n"
            "  pipe.png: “pipe.png” is a pipe, not a file.\n"
            "  text.png: not an image ImageIO can read.\n");
}

TEST_F(ProgramTest, TakesFurtherPathsFromStandardInput) {
  const std::string list = folder_.path("-a.png") + std::string(1, '\0') + folder_.path("b\n.png");
  ProgramOptions options;
  options.input = list;
  const ProgramResult result = ostra({"invert", "--files-from=-"}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("  -a.png: "));
  EXPECT_THAT(result.errors, Not(HasSubstr("ostra:")));
}

TEST_F(ProgramTest, SaysThatItsOutputCouldNotBeWritten) {
  const ProgramResult result =
      test::runProgram({"sh", "-c", std::string(OSTRA_PROGRAM) + " list >/dev/full"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("could not be written"));
}

// Else a picture could be opened as the stream that failures are printed to.
TEST_F(ProgramTest, DoesNotMistakeAFileForAMissingStandardStream) {
  test::writeFile(folder_.path("text.png"), "not a picture");
  ProgramOptions options;
  options.environment = {"XDG_CACHE_HOME=" + cache_.path()};
  const std::string command =
      std::string(OSTRA_PROGRAM) + " invert " + folder_.path("text.png") + " <&- >&- 2>&-";
  EXPECT_EQ(test::runProgram({"sh", "-c", command}, options).status, 1);
  const Bytes bytes = test::readFile(folder_.path("text.png"));
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "not a picture");
}

}  // namespace
}  // namespace ostra
