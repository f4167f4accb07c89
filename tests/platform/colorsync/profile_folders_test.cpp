#include "platform/colorsync/profile_folders.h"

#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/child.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class ProfileFolders : public testing::Test {
 protected:
  void add(const std::string& name) {
    fs::create_directories(fs::path(folder_.path(name)).parent_path());
    writeFile(folder_.path(name), "profile");
  }
  /// The paths that are visited, below the folder.
  std::vector<std::string> visited(std::vector<std::string> roots = {""}, std::size_t most = 1000) {
    for (std::string& root : roots) root = folder_.path(root);
    std::vector<std::string> paths;
    visitProfileFiles(roots, [&](const std::string& path, int file) {
      EXPECT_GE(fcntl(file, F_GETFD), 0);
      paths.push_back(fs::path(path).lexically_relative(folder_.path()).string());
      return paths.size() < most;
    });
    return paths;
  }

  TemporaryFolder folder_;
};

TEST_F(ProfileFolders, AreVisitedFilesFirstThenSubfoldersEachByName) {
  for (const char* name : {"b.icc", "a.icm", "sub/d.icc", "sub/c.icc", "sub/deep/e.icc", "other/f.icc"})
    add(name);
  EXPECT_THAT(visited(),
              ElementsAre("a.icm", "b.icc", "other/f.icc", "sub/c.icc", "sub/d.icc", "sub/deep/e.icc"));
}

TEST_F(ProfileFolders, AreVisitedInTheOrderGiven) {
  add("one/z.icc");
  add("two/a.icc");
  EXPECT_THAT(visited({"one", "missing", "two"}), ElementsAre("one/z.icc", "two/a.icc"));
}

TEST_F(ProfileFolders, HoldProfilesByTheirSuffixInAnyLetterCase) {
  for (const char* name : {"a.ICC", "b.Icm", "c.icc.txt", "d.ic", "icc", ".icc", "e.icd"}) add(name);
  EXPECT_THAT(visited(), ElementsAre("a.ICC", "b.Icm"));
}

TEST_F(ProfileFolders, EndTheVisitWhenTheVisitorSaysSo) {
  for (const char* name : {"a.icc", "b.icc", "sub/c.icc"}) add(name);
  EXPECT_THAT(visited({""}, 1), ElementsAre("a.icc"));
  EXPECT_THAT(visited({"", "sub"}, 3).size(), 3u);
}

TEST_F(ProfileFolders, FollowLinksToFilesAndFolders) {
  add("real/a.icc");
  fs::create_directory(folder_.path("root"));
  fs::create_symlink(folder_.path("real/a.icc"), folder_.path("root/link.icc"));
  fs::create_symlink(folder_.path("real"), folder_.path("root/folder"));
  fs::create_symlink("nowhere", folder_.path("root/broken.icc"));
  EXPECT_THAT(visited({"root"}), ElementsAre("root/link.icc", "root/folder/a.icc"));
}

TEST_F(ProfileFolders, AreNotEnteredAgainThroughALoopOfLinks) {
  add("a.icc");
  add("sub/b.icc");
  fs::create_symlink(folder_.path(), folder_.path("sub/up"));
  fs::create_symlink("loop.icc", folder_.path("loop.icc"));
  fs::create_symlink(".", folder_.path("self"));
  EXPECT_THAT(visited(), ElementsAre("a.icc", "sub/b.icc"));
  EXPECT_THAT(visited({"", "sub", "sub/up"}), ElementsAre("a.icc", "sub/b.icc"));
}

TEST_F(ProfileFolders, EndAtADepthThatNobodyNeeds) {
  std::string deep = "d";
  for (int i = 0; i < 30; ++i) deep += "/d";
  add(deep + "/a.icc");
  add("d/b.icc");
  EXPECT_THAT(visited(), ElementsAre("d/b.icc"));
}

// A pipe that nobody writes to would keep the program waiting for ever.
TEST_F(ProfileFolders, PassOverEverythingThatIsNoRegularFile) {
  ASSERT_EQ(mkfifo(folder_.path("pipe.icc").c_str(), 0600), 0);
  fs::create_symlink(folder_.path("pipe.icc"), folder_.path("link.icc"));
  fs::create_symlink("/dev/zero", folder_.path("zero.icc"));
  fs::create_directory(folder_.path("folder.icc"));
  add("folder.icc/a.icc");
  EXPECT_THAT(visited(), ElementsAre("folder.icc/a.icc"));
}

TEST_F(ProfileFolders, PassOverWhatTheUserMayNotRead) {
  add("closed/a.icc");
  add("b.icc");
  add("c.icc");
  chmod(folder_.path().c_str(), 0755);
  chmod(folder_.path("closed").c_str(), 0);
  chmod(folder_.path("b.icc").c_str(), 0);
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { EXPECT_THAT(visited(), ElementsAre("c.icc")); }), 0);
  chmod(folder_.path("closed").c_str(), 0755);
}

TEST(ProfileFolderList, FollowsTheDesktopsVariables) {
  EXPECT_EQ(runInChild([] {
              setenv("HOME", "/h", 1);
              setenv("XDG_DATA_HOME", "/own", 1);
              setenv("XDG_DATA_DIRS", "/one:relative::/two", 1);
              EXPECT_THAT(profileFolders(),
                          ElementsAre("/own/icc", "/h/.color/icc", "/own/color/icc", "/one/color/icc",
                                      "/two/color/icc", "/var/lib/color/icc", "/var/lib/colord/icc"));
              setenv("XDG_DATA_HOME", "relative", 1);
              unsetenv("XDG_DATA_DIRS");
              EXPECT_THAT(profileFolders(),
                          ElementsAre("/h/.local/share/icc", "/h/.color/icc", "/h/.local/share/color/icc",
                                      "/usr/local/share/color/icc", "/usr/share/color/icc",
                                      "/var/lib/color/icc", "/var/lib/colord/icc"));
              unsetenv("HOME");
              EXPECT_EQ(profileFolders().front(), "/usr/local/share/color/icc");
            }),
            0);
}

}  // namespace
}  // namespace ostra::test
