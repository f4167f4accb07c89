#include "host/integration/integrate.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/usage_error.h"
#include "platform/foundation/property_list.h"
#include "tests/host/integration/home_folder.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;
using testing::Not;

const std::string kUsersList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n<action>\n\t<name>Mine</name>\n"
    "\t<unique-id>17-1</unique-id>\n</action>\n</actions>";
const std::string kSystemsList = "<actions>\n<action><name>Terminal</name></action>\n</actions>\n";

/// A home of a user of all seven file managers.
class IntegrateTest : public testing::Test {
 protected:
  IntegrateTest() {
    fs::copy(OSTRA_SOURCE_BUNDLES, home_.system("/bundles"), fs::copy_options::recursive);
    for (const char* name : {"dolphin", "nautilus", "nemo", "caja", "thunar", "pcmanfm", "pcmanfm-qt"}) {
      home_.install(name);
    }
    home_.write(home_.system("/etc/Thunar/uca.xml"), kSystemsList);
    home_.write(home_.system("/lib/libfm/modules/gtk-menu-actions.so"), "");
  }

  std::string run(const IntegrationOptions& options = {}) {
    testing::internal::CaptureStderr();
    const DesktopFolders folders{data_,
                                 config_,
                                 {home_.system("/share")},
                                 {home_.system("/etc")},
                                 {home_.system("/lib")},
                                 {home_.system("/bin")}};
    const std::string bundles = home_.system("/bundles");
    std::string report;
    try {
      report = integrate(options, folders, {program_, bundles, bundles, OSTRA_MENU_TEMPLATES}, status_);
    } catch (const UsageError& refusal) {
      report = std::string("refused: ") + refusal.what();
    }
    errors_ = testing::internal::GetCapturedStderr();
    return report;
  }
  std::string remove() { return run({.remove = true}); }
  std::string data(const std::string& name) const { return data_ + "/" + name; }
  std::string list() const { return config_ + "/Thunar/uca.xml"; }

  test::HomeFolder home_;
  std::string data_ = home_.home("/.local/share"), config_ = home_.home("/.config");
  std::string program_ = "/opt/ostra";
  int status_ = -1;
  std::string errors_;
};

TEST_F(IntegrateTest, ServesEveryFileManagerAndLeavesAnEmptyHomeAsItWas) {
  const auto before = home_.snapshot();
  EXPECT_THAT(run(), HasSubstr("Thunar shows changes after “thunar -q”."));
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(errors_, "");
  for (const std::string& file : {data("kio/servicemenus/org.ostra.Ostra.desktop"),
                                  data("nemo/actions/org.ostra.02-grayscale.nemo_action"),
                                  data("file-manager/actions/org.ostra.menu.desktop"), list(),
                                  data("nautilus/scripts/Convert Picture/Convert to Grayscale"),
                                  config_ + "/caja/scripts/Convert Picture/Invert Color"}) {
    EXPECT_TRUE(fs::is_regular_file(file)) << file;
  }
  EXPECT_THAT(home_.read(list()), HasSubstr("Terminal"));

  EXPECT_THAT(remove(), HasSubstr("removed " + list()));
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(errors_, "");
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, LeavesWhatTheUserHadAsItWas) {
  home_.write(list(), kUsersList, 0640);
  home_.write(data("nemo/actions/mine.nemo_action"), "[Nemo Action]\n");
  home_.write(config_ + "/caja/scripts/Convert Picture/Mine", "#!/bin/sh\n", 0755);
  home_.write(data("kio/servicemenus/mine.desktop"), "", 0755);
  home_.write(data("ostra/notes"), "");
  fs::create_directories(data("file-manager/actions"));
  const auto before = home_.snapshot();
  run();
  EXPECT_EQ(status_, 0);
  EXPECT_THAT(home_.read(list()), HasSubstr("org.ostra.Ostra-invert"));
  EXPECT_THAT(home_.read(list()), Not(HasSubstr("Terminal")));
  remove();
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, ChangesNothingTheSecondTime) {
  home_.write(list(), kUsersList);
  run();
  const auto once = home_.snapshot();
  const auto time = fs::file_time_type::clock::now();
  EXPECT_EQ(run(), "There is nothing to change.\n");
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(home_.snapshot(), once);
  for (const auto& [name, state] : once) {
    EXPECT_LT(fs::last_write_time(fs::path(home_.home()) / name), time) << name;
  }
  remove();
  EXPECT_EQ(remove(), "There is nothing to change.\n");
}

TEST_F(IntegrateTest, OnlyTellsWhatItWouldDoInARehearsal) {
  home_.write(list(), kUsersList);
  const auto before = home_.snapshot();
  const std::string told = run({.isRehearsal = true});
  EXPECT_EQ(home_.snapshot(), before);
  const std::string done = run();
  const auto after = home_.snapshot();
  std::string expected = done;
  for (std::size_t at = 0; (at = expected.find("wrote ", at)) != std::string::npos; ++at) {
    expected.replace(at, 5, "would write");
  }
  EXPECT_EQ(told, expected);
  EXPECT_THAT(run({.remove = true, .isRehearsal = true}), HasSubstr("would remove " + data("kio") + "\n"));
  EXPECT_EQ(home_.snapshot(), after);
}

TEST_F(IntegrateTest, KeepsTheUsersEditsOfThunarsList) {
  for (const bool hadList : {true, false}) {
    SCOPED_TRACE(hadList);
    if (hadList) home_.write(list(), kUsersList);
    run();
    std::string edited = home_.read(list());
    edited.insert(edited.find("<actions>\n") + 10, "<action><name>New</name></action>\n");
    home_.write(list(), edited);
    run();
    remove();
    std::string expected = hadList ? kUsersList : kSystemsList;
    expected.insert(expected.find("<actions>\n") + 10, "<action><name>New</name></action>\n");
    EXPECT_EQ(home_.read(list()), expected);
    fs::remove_all(home_.home("/.config"));
  }
}

TEST_F(IntegrateTest, LeavesAnEntryThatTheUserChanged) {
  const std::string entry = data("nemo/actions/org.ostra.01-convert-color-profile.nemo_action");
  run();
  home_.write(entry, "mine now");
  run();
  EXPECT_THAT(errors_, HasSubstr(entry));
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(home_.read(entry), "mine now");
  remove();
  EXPECT_THAT(errors_, HasSubstr("stays as it is"));
  EXPECT_EQ(home_.read(entry), "mine now");
  EXPECT_FALSE(fs::exists(data("kio")));
  EXPECT_FALSE(fs::exists(data("ostra")));
  EXPECT_FALSE(fs::exists(data("nemo/actions/org.ostra.02-grayscale.nemo_action")));
}

TEST_F(IntegrateTest, NeverReplacesAFileThatIsNotOurs) {
  const std::string entry = data("kio/servicemenus/org.ostra.Ostra.desktop");
  home_.write(entry, "somebody's");
  fs::create_directories(data("nemo/actions"));
  home_.write(home_.home("/elsewhere"), "kept");
  fs::create_symlink(home_.home("/elsewhere"), data("nemo/actions/org.ostra.04-invert.nemo_action"));
  const auto before = home_.snapshot();
  run();
  EXPECT_EQ(home_.read(entry), "somebody's");
  EXPECT_EQ(home_.read(home_.home("/elsewhere")), "kept");
  remove();
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, MakesEntriesRunnableAgain) {
  const std::string entry = data("kio/servicemenus/org.ostra.Ostra.desktop");
  run();
  fs::permissions(entry, fs::perms(0644));
  EXPECT_THAT(run(), HasSubstr("wrote " + entry));
  EXPECT_NE(fs::status(entry).permissions() & fs::perms::owner_exec, fs::perms::none);
}

TEST_F(IntegrateTest, FollowsALinkToThunarsListAndLeavesTheLink) {
  home_.write(home_.home("/dotfiles/uca.xml"), kUsersList);
  fs::create_directories(config_ + "/Thunar");
  fs::create_symlink("../../dotfiles/uca.xml", list());
  const auto before = home_.snapshot();
  run();
  EXPECT_TRUE(fs::is_symlink(list()));
  EXPECT_THAT(home_.read(home_.home("/dotfiles/uca.xml")), HasSubstr("org.ostra.Ostra-invert"));
  remove();
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, FollowsALinkToNoListYet) {
  fs::create_directories(home_.home("/dotfiles"));
  fs::create_directories(config_ + "/Thunar");
  fs::create_symlink("../../dotfiles/uca.xml", list());
  const auto before = home_.snapshot();
  run();
  EXPECT_THAT(home_.read(home_.home("/dotfiles/uca.xml")), HasSubstr("org.ostra.Ostra-invert"));
  remove();
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, LeavesAListThatIsNoneAloneAndServesTheOthers) {
  home_.write(list(), "<actions><action></actions>");
  run();
  EXPECT_EQ(status_, 1);
  EXPECT_THAT(errors_, HasSubstr("“" + list() + "” stays as it is: it is no well-formed XML"));
  EXPECT_EQ(home_.read(list()), "<actions><action></actions>");
  EXPECT_TRUE(fs::exists(data("kio/servicemenus/org.ostra.Ostra.desktop")));
  remove();
  EXPECT_EQ(status_, 1);
  EXPECT_FALSE(fs::exists(data("kio")));
}

TEST_F(IntegrateTest, TellsWhatCouldNotBeWrittenAndGoesOn) {
  fs::create_directories(list());
  home_.write(data("nemo"), "in the way");
  const auto before = home_.snapshot();
  run();
  EXPECT_EQ(status_, 1);
  EXPECT_THAT(errors_, HasSubstr("uca.xml"));
  EXPECT_THAT(errors_, HasSubstr("nemo"));
  EXPECT_TRUE(fs::exists(data("kio/servicemenus/org.ostra.Ostra.desktop")));
  fs::remove(list());
  remove();
  fs::create_directories(list());
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, SkipsWhatAPackageServes) {
  run();
  home_.write(home_.system("/share/kio/servicemenus/org.ostra.Ostra.desktop"), "");
  home_.write(home_.system("/lib/thunarx-3/ostra-thunar.so"), "");
  EXPECT_THAT(run(), HasSubstr("Dolphin has the entries from a package of the system.\n"));
  EXPECT_FALSE(fs::exists(data("kio")));
  EXPECT_FALSE(fs::exists(list()));
  EXPECT_TRUE(fs::exists(data("nemo/actions/org.ostra.02-grayscale.nemo_action")));
}

TEST_F(IntegrateTest, FollowsTheBundlesAndTheProgram) {
  run();
  fs::create_directories(home_.system("/bundles/sepia"));
  const Bytes info =
      writePropertyList(Dictionary{{"NIVEQuickAction", "x"}, {"CFBundleDisplayName", "Sepia"}});
  test::writeFile(home_.system("/bundles/sepia/Info.plist"), ByteView(info));
  fs::remove_all(home_.system("/bundles/invert"));
  program_ = "/new/ostra";
  run();
  EXPECT_THAT(home_.read(list()), HasSubstr("org.ostra.Ostra-sepia"));
  EXPECT_THAT(home_.read(list()), Not(HasSubstr("org.ostra.Ostra-invert")));
  for (const auto& [name, state] : home_.snapshot()) {
    EXPECT_THAT(state, Not(HasSubstr("/opt/ostra"))) << name;
    EXPECT_THAT(name, Not(HasSubstr("Invert"))) << name;
  }
  EXPECT_TRUE(fs::exists(data("nautilus/scripts/Convert Picture/Sepia")));
  remove();
  EXPECT_TRUE(home_.snapshot().empty());
}

TEST_F(IntegrateTest, DoesNotNameAProgramToNemoThatItCouldNotRun) {
  program_ = "/100%/ostra";
  EXPECT_THAT(run(), HasSubstr("Nemo cannot run"));
  EXPECT_FALSE(fs::exists(data("nemo")));
  EXPECT_THAT(home_.read(list()), HasSubstr("'/100%%/ostra'"));
}

TEST_F(IntegrateTest, SaysThatPCManFMLacksALibrary) {
  fs::remove_all(home_.system("/lib"));
  EXPECT_THAT(run(), HasSubstr("PCManFM shows the entries once the package libfm-modules is installed.\n"));
}

TEST_F(IntegrateTest, RefusesWhereNoFileManagerIs) {
  fs::remove_all(home_.system("/bin"));
  EXPECT_THAT(run(), HasSubstr("refused: No file manager"));
  EXPECT_TRUE(home_.snapshot().empty());
}

TEST_F(IntegrateTest, WritesNothingThatItCannotRecord) {
  home_.write(data("ostra"), "in the way");
  const auto before = home_.snapshot();
  EXPECT_THAT(run(), HasSubstr("refused: "));
  EXPECT_EQ(home_.snapshot(), before);
}

TEST_F(IntegrateTest, RefusesWhereItsRecordCannotBeRead) {
  home_.write(data("ostra/integration.plist"), "torn");
  const auto before = home_.snapshot();
  EXPECT_THAT(run(), HasSubstr("refused: "));
  EXPECT_THAT(remove(), HasSubstr("refused: "));
  EXPECT_EQ(home_.snapshot(), before);
}

}  // namespace
}  // namespace ostra
