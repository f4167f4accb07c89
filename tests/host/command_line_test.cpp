#include "host/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/usage_error.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Command = CommandLine::Command;

/// The sentence that refuses the arguments, or "accepted".
std::string refusal(const std::vector<std::string>& arguments) {
  try {
    parseCommandLine(arguments);
    return "accepted";
  } catch (const UsageError& failure) {
    return failure.what();
  }
}

TEST(CommandLine, IsAnActionAndItsFiles) {
  const CommandLine line = parseCommandLine({"srgb-jpg", "a.png", "b c.png"});
  EXPECT_EQ(line.command, Command::convert);
  EXPECT_EQ(line.action, "srgb-jpg");
  EXPECT_FALSE(line.bundle);
  EXPECT_THAT(line.files, ElementsAre("a.png", "b c.png"));
  EXPECT_FALSE(line.filesFrom);
  EXPECT_EQ(line.userInterface, UserInterfaceChoice::automatic);
  EXPECT_FALSE(line.verbose);
}

TEST(CommandLine, LeavesItToTheRequestToMissTheFiles) {
  EXPECT_THAT(parseCommandLine({"invert"}).files, IsEmpty());
}

TEST(CommandLine, IsABundleAndItsFiles) {
  for (const auto& arguments : {std::vector<std::string>{"--bundle", "/b/invert", "list", "a.png"},
                                std::vector<std::string>{"--bundle=/b/invert", "list", "a.png"},
                                std::vector<std::string>{"list", "--bundle", "/b/invert", "a.png"}}) {
    const CommandLine line = parseCommandLine(arguments);
    EXPECT_EQ(line.command, Command::convert);
    EXPECT_EQ(line.bundle, "/b/invert");
    EXPECT_EQ(line.action, "");
    EXPECT_THAT(line.files, ElementsAre("list", "a.png"));
  }
}

TEST(CommandLine, TakesOptionsAnywhereBeforeTheDashes) {
  const CommandLine line =
      parseCommandLine({"--verbose", "srgb", "a.png", "--ui=none", "--files-from", "-", "b.png"});
  EXPECT_TRUE(line.verbose);
  EXPECT_EQ(line.userInterface, UserInterfaceChoice::none);
  EXPECT_EQ(line.filesFrom, "-");
  EXPECT_THAT(line.files, ElementsAre("a.png", "b.png"));
}

TEST(CommandLine, TakesEveryWordAfterTheDashesAsAName) {
  const CommandLine line =
      parseCommandLine({"srgb", "a.png", "--", "--verbose", "-x.png", "--", "--nonsense"});
  EXPECT_FALSE(line.verbose);
  EXPECT_THAT(line.files, ElementsAre("a.png", "--verbose", "-x.png", "--", "--nonsense"));
}

TEST(CommandLine, TakesTheActionAfterTheDashesToo) {
  const CommandLine line = parseCommandLine({"--", "srgb", "-a.png"});
  EXPECT_EQ(line.action, "srgb");
  EXPECT_THAT(line.files, ElementsAre("-a.png"));
}

TEST(CommandLine, KeepsNamesThatLookLikeSomethingElse) {
  const std::vector<std::string> names{"[a,b]", "{}", "%%",   "a=b",  "/x",      "++",
                                       "-",     "",   "list", "a\nb", "\xFF.png"};
  std::vector<std::string> arguments{"srgb"};
  arguments.insert(arguments.end(), names.begin(), names.end());
  EXPECT_EQ(parseCommandLine(arguments).files, names);
}

TEST(CommandLine, TellsAnEmptyValueFromAnOptionThatIsMissing) {
  const CommandLine line = parseCommandLine({"--bundle", "", "--files-from", "", "a.png"});
  EXPECT_EQ(line.bundle, "");
  EXPECT_EQ(line.filesFrom, "");
  EXPECT_THAT(line.files, ElementsAre("a.png"));
}

TEST(CommandLine, TakesTheLastOfAnOptionThatIsGivenTwice) {
  EXPECT_EQ(parseCommandLine({"--bundle=/a", "--bundle=/b"}).bundle, "/b");
}

TEST(CommandLine, KnowsEachUserInterface) {
  EXPECT_EQ(parseCommandLine({"--ui=auto", "srgb"}).userInterface, UserInterfaceChoice::automatic);
  EXPECT_EQ(parseCommandLine({"--ui", "desktop", "srgb"}).userInterface, UserInterfaceChoice::desktop);
  EXPECT_EQ(parseCommandLine({"--ui=terminal", "srgb"}).userInterface, UserInterfaceChoice::terminal);
  EXPECT_EQ(parseCommandLine({"--ui=terminal", "--ui=none", "srgb"}).userInterface,
            UserInterfaceChoice::none);
  EXPECT_THAT(refusal({"--ui=window", "srgb"}), HasSubstr("not “window”"));
}

TEST(CommandLine, KnowsTheCommandsThatConvertNothing) {
  EXPECT_EQ(parseCommandLine({"list"}).command, Command::list);
  EXPECT_EQ(parseCommandLine({"formats"}).command, Command::formats);
  EXPECT_EQ(parseCommandLine({"--help"}).command, Command::help);
  EXPECT_EQ(parseCommandLine({"srgb", "--version", "a.png"}).command, Command::version);
}

TEST(CommandLine, RefusesWhatItDoesNotUnderstand) {
  EXPECT_THAT(refusal({}), HasSubstr("Say which action"));
  EXPECT_THAT(refusal({"srgb", "--nonsense", "a.png"}), HasSubstr("“--nonsense”"));
  EXPECT_THAT(refusal({"srgb", "-x.png"}), HasSubstr("“-x.png”"));
  EXPECT_THAT(refusal({"srgb", "--ui"}), HasSubstr("--ui"));
  EXPECT_THAT(refusal({"list", "a.png"}), HasSubstr("no further words"));
}

TEST(CommandLine, KnowsTheAnswerToThePanel) {
  const CommandLine line = parseCommandLine({"--profile", "Display P3", "convert-color-profile", "a.png"});
  EXPECT_EQ(line.profile, "Display P3");
  EXPECT_EQ(line.action, "convert-color-profile");
  EXPECT_FALSE(parseCommandLine({"srgb", "a.png"}).profile);
  EXPECT_EQ(parseCommandLine({"convert-color-profile", "--profile", ""}).profile, "");
  EXPECT_EQ(parseCommandLine({"--bundle=/b", "--profile=-1", "a.png"}).profile, "-1");
}

TEST(CommandLine, KnowsTheListOfProfiles) {
  EXPECT_EQ(parseCommandLine({"profiles"}).command, Command::profiles);
  EXPECT_THAT(refusal({"profiles", "a.png"}), HasSubstr("“ostra profiles” takes no further words"));
  EXPECT_THAT(refusal({"--profile=x", "profiles"}), HasSubstr("takes no --profile"));
  EXPECT_THAT(refusal({"--profile=x", "list"}), HasSubstr("takes no --profile"));
  EXPECT_EQ(parseCommandLine({"--bundle=/b", "profiles"}).command, Command::convert);
}

TEST(CommandLine, KnowsTheIntegrationAndItsOptions) {
  const CommandLine plain = parseCommandLine({"integrate"});
  EXPECT_EQ(plain.command, Command::integrate);
  EXPECT_FALSE(plain.remove || plain.isRehearsal);
  EXPECT_TRUE(parseCommandLine({"integrate", "--remove"}).remove);
  EXPECT_TRUE(parseCommandLine({"--dry-run", "integrate"}).isRehearsal);
  EXPECT_THAT(refusal({"integrate", "a.png"}), HasSubstr("no further words"));
  EXPECT_THAT(refusal({"srgb", "--remove", "a.png"}), HasSubstr("for “ostra integrate” only"));
  EXPECT_THAT(refusal({"--bundle=/b", "--dry-run", "a.png"}), HasSubstr("for “ostra integrate” only"));
  EXPECT_THAT(refusal({"list", "--remove"}), HasSubstr("for “ostra integrate” only"));
  EXPECT_EQ(parseCommandLine({"--bundle=/b", "integrate"}).command, Command::convert);
}

TEST(CommandLine, AdvertisesOnlyWhatIsThere) {
  const std::string help = helpText();
  for (const char* word : {"--bundle", "--files-from", "--ui", "--verbose", "--version", "list", "profiles",
                           "formats", "--profile NAME", "integrate", "--remove", "--dry-run"}) {
    EXPECT_THAT(help, HasSubstr(word));
  }
}

}  // namespace
}  // namespace ostra
