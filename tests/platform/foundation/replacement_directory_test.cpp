#include "platform/foundation/replacement_directory.h"

#include <cerrno>
#include <ctime>
#include <filesystem>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/service.h"
#include "tests/platform/foundation/faulty_file_calls.h"
#include "tests/platform/foundation/pictures.h"
#include "tests/support/child.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

class ReplacementDirectory : public PicturesTest {
 protected:
  std::string make(std::string_view name) const {
    return NSFileManager::defaultManager()
        .URLForDirectory(NSSearchPathDirectory::itemReplacement, NSSearchPathDomainMask::user, url(name),
                         true)
        .path();
  }
  void loseCache() const {
    writeFile(folder_.path("no folder"), "");
    setenv("XDG_CACHE_HOME", folder_.path("no folder").c_str(), 1);
  }
};

std::string parentOf(const std::string& path) { return fs::path(path).parent_path().string(); }

TEST_F(ReplacementDirectory, IsFreshEmptyAndPrivate) {
  makePicture("a.png");
  const mode_t before = umask(0);
  const std::string first = make("a.png");
  const std::string second = make("a.png");
  umask(before);
  EXPECT_NE(first, second);
  EXPECT_TRUE(fs::is_empty(first));
  EXPECT_EQ(modeOf(first), 0700U);
}

TEST_F(ReplacementDirectory, StandsInTheUsersCacheWhereARenameFromThereWorks) {
  makePicture("a.png");
  EXPECT_EQ(parentOf(make("a.png")), folder_.path("cache/ostra"));
  EXPECT_EQ(pictureNames(), "a.png");
  EXPECT_EQ(replacementCacheFolder(), folder_.path("cache/ostra"));
}

TEST_F(ReplacementDirectory, StandsBesideThePictureWhereTheUserHasNoCache) {
  makePicture("a.png");
  loseCache();
  const std::string made = make("a.png");
  EXPECT_EQ(parentOf(made), fs::canonical(folder_.path("pictures")).string());
  EXPECT_TRUE(isReplacementDirectory(made));
  EXPECT_EQ(fs::path(made).filename().string()[0], '.');
}

TEST_F(ReplacementDirectory, StandsBesideThePictureWhereTheCacheDoesNotReachIt) {
  makePicture("a.png");
  FaultyFileCalls calls(FaultyFileCalls::failingAll("link", EXDEV));
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(parentOf(make("a.png")), fs::canonical(folder_.path("pictures")).string());
  EXPECT_EQ(cacheNames(), "");
}

/// The same file system, the same device number, and yet no rename leads across.
TEST_F(ReplacementDirectory, StandsBesideThePictureInAMountOfTheSameFileSystem) {
  const int status = runInChild([&] {
    fs::create_directory(folder_.path("mounted"));
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount(folder_.path("mounted").c_str(), folder_.path("pictures").c_str(), nullptr, MS_BIND, nullptr) !=
            0) {
      _exit(77);
    }
    const URL original = makePicture("a.png");
    rewrite(original);
    EXPECT_EQ(textOf(picture("a.png")), kNew);
    EXPECT_EQ(pictureNames(), "a.png");
    EXPECT_EQ(parentOf(make("a.png")), fs::canonical(folder_.path("pictures")).string());
  });
  if (status == 77) GTEST_SKIP() << "nothing can be mounted here";
  EXPECT_EQ(status, 0);
}

TEST_F(ReplacementDirectory, ThatCannotBeMadeIsAnErrorAboutThePicture) {
  EXPECT_EQ(sentenceOf([&] { make("missing/a.png"); }), "The file “a.png” doesn’t exist.");
  makePicture("a.png");
  fs::permissions(folder_.path("pictures"), fs::perms(0555));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              EXPECT_EQ(sentenceOf([&] { make("a.png"); }),
                        "You don’t have permission to save the file “a.png” in the folder “pictures”.");
            }),
            0);
  fs::permissions(folder_.path("pictures"), fs::perms(0755));
}

TEST(PassingName, NamesItsProcess) {
  EXPECT_EQ(processOfPassingName(passingName()), getpid());
  EXPECT_NE(passingName(), passingName());
  EXPECT_EQ(processOfPassingName(".ostra-12-abc012"), 12);
  for (const char* other : {"", ".ostra-", ".ostra-12", ".ostra-12-", ".ostra-12-abc01", ".ostra-12-abc0123",
                            ".ostra-12-ABC012", ".ostra-x-abc012", ".ostra-0-abc012", ".ostra--5-abc012",
                            "ostra-12-abc012", ".ostra-99999999999-abc012", ".ostra-12-abc01."}) {
    EXPECT_EQ(processOfPassingName(other), std::nullopt) << other;
  }
}

class Pruning : public PicturesTest {
 protected:
  Pruning() {
    deadProcess_ = fork();
    if (deadProcess_ == 0) _exit(0);
    waitpid(deadProcess_, nullptr, 0);
  }

  std::string name(int process, std::string_view end) const {
    return picture(".ostra-" + std::to_string(process) + "-" + std::string(end));
  }
  std::string directory(int process, std::string_view end) const {
    std::string path = name(process, end);
    fs::create_directory(path);
    writeFile(path + "/a.png", kNew);
    age(path, 8);
    return path;
  }
  static void age(const std::string& path, int days) {
    const timespec then = {time(nullptr) - time_t{86400} * days, 0};
    const timespec times[2] = {then, then};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }

  pid_t deadProcess_ = 0;
};

TEST_F(Pruning, RemovesOldEntriesOfDeadProcesses) {
  const std::string folder = directory(deadProcess_, "aaaaaa");
  const std::string file = name(deadProcess_, "bbbbbb");
  writeFile(file, kNew);
  age(file, 8);
  makePicture("a.png");
  age(picture("a.png"), 8);
  pruneReplacementDirectories(folder_.path("pictures"));
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_F(Pruning, SparesYoungOnesAndThoseOfTheLiving) {
  age(directory(deadProcess_, "aaaaaa"), 6);
  directory(getpid(), "bbbbbb");
  const std::string before = pictureNames();
  pruneReplacementDirectories(folder_.path("pictures"));
  EXPECT_EQ(pictureNames(), before);
}

TEST_F(Pruning, SparesWhatIsNotOurs) {
  OSTRA_NEEDS_ROOT("give folders away");
  ASSERT_EQ(chown(directory(deadProcess_, "aaaaaa").c_str(), 12345, 12345), 0);
  fs::create_directory(picture(".ostra-backup"));
  age(picture(".ostra-backup"), 30);
  const std::string before = pictureNames();
  pruneReplacementDirectories(folder_.path("pictures"));
  EXPECT_EQ(pictureNames(), before);
}

TEST_F(Pruning, FollowsNoLinks) {
  makePicture("a.png");
  fs::create_directory(picture("album"));
  writeFile(picture("album/b.png"), kOld);
  fs::create_symlink("album", name(deadProcess_, "aaaaaa"));
  age(name(deadProcess_, "aaaaaa"), 8);
  const std::string folder = directory(deadProcess_, "bbbbbb");
  fs::create_symlink(picture("album"), folder + "/album");
  age(folder, 8);
  pruneReplacementDirectories(folder_.path("pictures"));
  EXPECT_FALSE(fs::exists(folder));
  EXPECT_EQ(textOf(picture("album/b.png")), kOld);
}

TEST_F(Pruning, OfAFolderThatIsNotThereDoesNothing) { pruneReplacementDirectories(picture("missing")); }

TEST_F(PicturesTest, RemovingAFolderTakesAllInItAndFollowsNoLinks) {
  fs::create_directories(picture("x/y"));
  makePicture("a.png");
  fs::create_symlink(picture("a.png"), picture("x/y/link"));
  NSFileManager::defaultManager().removeItemAtURL(url("x"));
  EXPECT_EQ(pictureNames(), "a.png");
  EXPECT_EQ(codeOf([&] { NSFileManager::defaultManager().removeItemAtURL(url("x")); }),
            NSFileNoSuchFileError);
}

}  // namespace
}  // namespace ostra::test
