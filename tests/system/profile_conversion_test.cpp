// The profile conversion from outside: on a terminal, from the command line, and where nobody can be asked.
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/child.h"
#include "tests/support/icc_builder.h"
#include "tests/support/terminal_session.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kBuiltIns =
    "sRGB IEC61966-2.1\nDisplay P3\nAdobe RGB (1998)\nProPhoto RGB (ROMM)\nRec. 2020 (ITU-R BT.2020)\n"
    "DCI-P3\nLinear sRGB\nGeneric Gray Gamma 2.2\n";

class ProfileConversion : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
    for (const char* name : {"a.png", "b.jpg"}) makePicture(folder.path(name));
    for (const std::string& each :
         {folder.path(), folder.path("a.png"), folder.path("b.jpg"), profiles.path()})
      giveToOrdinaryUser(each.c_str());
    fs::create_directory(profiles.path("icc"));
    fs::permissions(profiles.path(), fs::perms(0755));
  }

  /// The program's environment, the installed profiles those of the test and of the system's fixed folders.
  std::vector<std::string> environment() const {
    std::vector<std::string> pairs = program.environment();
    pairs.insert(pairs.end(), {"XDG_DATA_HOME=" + profiles.path(), "XDG_DATA_DIRS=/nowhere",
                               "DISPLAY=", "WAYLAND_DISPLAY="});
    return pairs;
  }
  ProgramResult run(const std::vector<std::string>& arguments, bool asOrdinaryUser = false) const {
    ProgramOptions options;
    options.environment = environment();
    options.asOrdinaryUser = asOrdinaryUser;
    return program.run(arguments, options);
  }
  std::unique_ptr<TerminalSession> onTerminal(std::vector<std::string> arguments,
                                              bool asOrdinaryUser = false) const {
    arguments.insert(arguments.begin(), program.path());
    return std::make_unique<TerminalSession>(arguments, environment(), asOrdinaryUser);
  }
  static std::string profileOf(const std::string& path) {
    return runProgram({"exiftool", "-s3", "-ICC_Profile:ProfileDescription", path}).output;
  }
  /// A profile that another program made, under a name of its own.
  void install(const std::string& file, const std::string& source) const {
    fs::copy_file("/usr/share/color/icc/" + source, profiles.path("icc/" + file));
  }

  InstalledProgram program;
  TemporaryFolder folder, profiles;
};

TEST_F(ProfileConversion, AsksOnTheTerminalConvertsAndRemembers) {
  {
    const auto terminal = onTerminal({"convert-color-profile", folder.path("a.png"), folder.path("b.jpg")});
    ASSERT_TRUE(terminal->waitFor("Profile [sRGB IEC61966-2.1]: ")) << terminal->screen();
    EXPECT_THAT(terminal->screen(), StartsWith("Convert Color Profile\r\nThe selected images are converted"));
    terminal->type("display p3\n");
    EXPECT_EQ(terminal->waitForEnd(), 0) << terminal->screen();
  }
  EXPECT_EQ(profileOf(folder.path("a.png")), "Display P3\n");
  EXPECT_EQ(profileOf(folder.path("b.jpg")), "Display P3\n");
  const auto terminal = onTerminal({"convert-color-profile", folder.path("a.png")});
  ASSERT_TRUE(terminal->waitFor("Profile [Display P3]: ")) << terminal->screen();
  terminal->type("3\n");
  EXPECT_EQ(terminal->waitForEnd(), 0) << terminal->screen();
  EXPECT_EQ(profileOf(folder.path("a.png")), "Adobe RGB (1998)\n");
}

TEST_F(ProfileConversion, CancelledOnTheTerminalTouchesNothingAndSaysNothing) {
  for (const char* keys : {"q\n", "\x1b\n", "\x04"}) {
    const Bytes before = readFile(folder.path("a.png"));
    const auto terminal = onTerminal({"convert-color-profile", folder.path("a.png")});
    ASSERT_TRUE(terminal->waitFor("]: ")) << terminal->screen();
    const std::size_t shown = terminal->screen().size();
    terminal->type(keys);
    EXPECT_EQ(terminal->waitForEnd(), 130);
    EXPECT_EQ(readFile(folder.path("a.png")), before);
    EXPECT_THAT(terminal->screen().substr(shown), Not(HasSubstr("ostra")));
  }
}

TEST_F(ProfileConversion, EndsAtOnceWhenASignalComesWhileItAsks) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Bytes before = readFile(folder.path("a.png"));
    const auto terminal = onTerminal({"convert-color-profile", folder.path("a.png")});
    ASSERT_TRUE(terminal->waitFor("]: ")) << terminal->screen();
    const std::size_t shown = terminal->screen().size();
    terminal->signal(signal);
    EXPECT_EQ(terminal->waitForEnd(), 128 + signal);
    EXPECT_EQ(readFile(folder.path("a.png")), before);
    EXPECT_EQ(terminal->screen().substr(shown), "\r\n");
  }
}

TEST_F(ProfileConversion, ShowsTheAlertOnTheTerminal) {
  writeFile(folder.path("text.png"), "not a picture");
  const auto terminal = onTerminal({"convert-color-profile", folder.path("text.png"), folder.path("a.png")});
  ASSERT_TRUE(terminal->waitFor("]: "));
  terminal->type("2\n");
  EXPECT_EQ(terminal->waitForEnd(), 1);
  EXPECT_THAT(terminal->screen(), HasSubstr("Convert Color Profile could not convert every image\r\n"
                                            "  text.png: not an image ImageIO can read.\r\n"));
  EXPECT_EQ(profileOf(folder.path("a.png")), "Display P3\n");
}

TEST_F(ProfileConversion, SaysThatNoImageWasSelectedOnlyAfterTheChoiceWhichIsRemembered) {
  const auto terminal = onTerminal({"convert-color-profile"});
  ASSERT_TRUE(terminal->waitFor("]: "));
  terminal->type("dci\n");
  EXPECT_EQ(terminal->waitForEnd(), 2);
  EXPECT_THAT(terminal->screen(), HasSubstr("ostra: No image was selected."));
  const auto next = onTerminal({"convert-color-profile"});
  EXPECT_TRUE(next->waitFor("Profile [DCI-P3]: "));
}

TEST_F(ProfileConversion, AsksForAnotherPlaceWhereTheFolderIsReadOnly) {
  const TemporaryFolder other;
  chmod(other.path().c_str(), 0777);
  chmod(folder.path().c_str(), 0555);
  const auto terminal = onTerminal({"jpg", folder.path("a.png")}, true);
  ASSERT_TRUE(terminal->waitFor("Save as [")) << terminal->screen();
  terminal->type(other.path("saved.jpg") + "\n");
  EXPECT_EQ(terminal->waitForEnd(), 0) << terminal->screen();
  chmod(folder.path().c_str(), 0755);
  EXPECT_EQ(identify(other.path("saved.jpg"), "%m"), "JPEG");
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.png", "b.jpg"}));
}

TEST_F(ProfileConversion, IsAnsweredFromTheCommandLineWhichIsRememberedToo) {
  const ProgramResult result = run(
      {"--profile", "ADOBE rgb (1998)", "convert-color-profile", folder.path("a.png"), folder.path("b.jpg")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output + result.errors, "");
  EXPECT_EQ(profileOf(folder.path("a.png")), "Adobe RGB (1998)\n");
  EXPECT_EQ(profileOf(folder.path("b.jpg")), "Adobe RGB (1998)\n");
  const auto terminal = onTerminal({"convert-color-profile"});
  EXPECT_TRUE(terminal->waitFor("Profile [Adobe RGB (1998)]: "));
}

TEST_F(ProfileConversion, RefusesAnUnknownNameAndStoresAndConvertsNothing) {
  run({"--profile", "Display P3", "convert-color-profile"});
  const Bytes before = readFile(folder.path("a.png"));
  const ProgramResult result = run({"--profile", "Adobe RBG", "convert-color-profile", folder.path("a.png")});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.errors, "ostra: There is no profile “Adobe RBG”. See “ostra profiles”.\n");
  const ProgramResult near = run({"--profile", "display p4", "convert-color-profile", folder.path("a.png")});
  EXPECT_EQ(near.errors,
            "ostra: There is no profile “display p4”. Near it: “Display P3”. See “ostra profiles”.\n");
  EXPECT_EQ(readFile(folder.path("a.png")), before);
  const auto terminal = onTerminal({"convert-color-profile"});
  EXPECT_TRUE(terminal->waitFor("Profile [Display P3]: "));
}

TEST_F(ProfileConversion, SaysHowToNameAProfileWhereNobodyCanBeAsked) {
  const Bytes before = readFile(folder.path("a.png"));
  for (const char* ui : {"--ui=auto", "--ui=none", "--ui=desktop"}) {
    const ProgramResult result = run({ui, "convert-color-profile", folder.path("a.png")});
    EXPECT_EQ(result.status, 2) << ui;
    EXPECT_THAT(result.errors,
                HasSubstr("Name it with “--profile NAME”; “ostra profiles” lists the names.\n"));
  }
  EXPECT_EQ(readFile(folder.path("a.png")), before);
}

TEST_F(ProfileConversion, ListsTheProfilesInTheOrderOfThePanel) {
  ASSERT_TRUE(fs::exists("/usr/share/color/icc/sRGB.icc")) << "icc-profiles-free is not installed";
  EXPECT_THAT(run({"profiles"}).output, StartsWith(kBuiltIns));
  install("z.icc", "sRGB.icc");
  install("a.ICM", "compatibleWithAdobeRGB1998.icc");
  const ProgramResult result = run({"profiles"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, StartsWith(std::string(kBuiltIns) + "\n"));
  EXPECT_THAT(result.output, HasSubstr("\nCompatible with Adobe RGB (1998)\n"));
  EXPECT_THAT(result.output, HasSubstr("\nsRGB\n"));
}

TEST_F(ProfileConversion, ConvertsToAnInstalledProfile) {
  ASSERT_TRUE(fs::exists("/usr/share/color/icc/sRGB.icc")) << "icc-profiles-free is not installed";
  install("adobe.icc", "compatibleWithAdobeRGB1998.icc");
  const std::string name = "Compatible with Adobe RGB (1998)";
  EXPECT_EQ(run({"--profile", name, "convert-color-profile", folder.path("a.png")}).status, 0);
  EXPECT_EQ(profileOf(folder.path("a.png")), name + "\n");
  fs::remove(profiles.path("icc/adobe.icc"));
  const auto terminal = onTerminal({"convert-color-profile"});
  EXPECT_TRUE(terminal->waitFor("Profile [sRGB IEC61966-2.1]: ")) << "the remembered one is gone";
}

TEST_F(ProfileConversion, IsNotTroubledByWhatLiesAmongTheProfiles) {
  const std::string icc = profiles.path("icc/");
  const ProgramResult clean = run({"profiles"});
  writeFile(icc + "junk.icc", "junk");
  writeFile(icc + "liar.icc", iccFile({"RGB ", "mntr", {{"desc", descriptionTag("Liar")}}}));
  Bytes huge = iccFile({"RGB ", "mntr", {{"desc", descriptionTag("Huge")}}});
  putNumber(huge, 0, 0xFFFFFFFF);
  writeFile(icc + "huge.icc", huge);
  truncate((icc + "huge.icc").c_str(), off_t{1} << 40);
  ASSERT_EQ(mkfifo((icc + "pipe.icc").c_str(), 0600), 0);
  fs::create_directory_symlink("..", icc + "up");
  fs::create_symlink("/dev/zero", icc + "zero.icc");
  writeFile(icc + "secret.icc", "secret");
  chmod((icc + "secret.icc").c_str(), 0);
  fs::create_directory(icc + "closed");
  chmod((icc + "closed").c_str(), 0);
  const ProgramResult result = run({"profiles"}, true);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, clean.output);
  EXPECT_EQ(result.errors, "");
  chmod((icc + "closed").c_str(), 0755);
}

TEST_F(ProfileConversion, IsNotTroubledByItsSettings) {
  const std::string home = program.environment().at(0).substr(5);
  const std::string file = home + "/config/ostra/defaults.plist";
  fs::create_directories(home + "/config/ostra");
  const std::string contents[] = {"junk", std::string(5 << 20, 'x'), "",
                                  "<plist version=\"1.0\"><dict><key>OstraQuickActionLastProfile</key>"
                                  "<array/></dict></plist>"};
  for (const std::string& each : contents) {
    writeFile(file, each);
    const auto terminal = onTerminal({"convert-color-profile"});
    EXPECT_TRUE(terminal->waitFor("Profile [sRGB IEC61966-2.1]: "));
  }
  chmod(file.c_str(), 0);
  chmod((home + "/config/ostra").c_str(), 0555);
  const ProgramResult result =
      run({"--profile", "Display P3", "convert-color-profile", folder.path("a.png")}, true);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(profileOf(folder.path("a.png")), "Display P3\n");
  chmod((home + "/config/ostra").c_str(), 0755);
}

// Only the panel asks for profiles; the other six actions have no time for them.
TEST_F(ProfileConversion, IsTheOnlyActionThatReadsProfilesAndSettings) {
  OSTRA_NEEDS_PROGRAM("strace");
  install("adobe.icc", "compatibleWithAdobeRGB1998.icc");
  const std::string trace = folder.path("trace");
  const auto opened = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"strace", "-f", "-e", "trace=%file", "-o", trace, program.path()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    ProgramOptions options;
    options.environment = environment();
    // The sanitizer looks for leaks as strace does its work, and a process can be traced once.
    options.environment.emplace_back("ASAN_OPTIONS=detect_leaks=0");
    EXPECT_EQ(runProgram(words, options).status, 0);
    const Bytes bytes = readFile(trace);
    return std::string(bytes.begin(), bytes.end());
  };
  const std::string touched = opened({"--ui=none", "invert", folder.path("a.png")});
  for (const char* word : {"icc", "defaults.plist", "locale", "gtk"})
    EXPECT_THAT(touched, Not(HasSubstr(word)));
  EXPECT_THAT(opened({"--ui=none", "--profile=DCI-P3", "convert-color-profile", folder.path("a.png")}),
              testing::AllOf(HasSubstr("adobe.icc"), HasSubstr("defaults.plist")));
}

}  // namespace
}  // namespace ostra::test
