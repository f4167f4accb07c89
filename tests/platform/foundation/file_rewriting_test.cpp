#include <cerrno>
#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/service.h"
#include "tests/platform/foundation/faulty_file_calls.h"
#include "tests/platform/foundation/pictures.h"
#include "tests/support/child.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

using Rewriting = PicturesTest;

TEST_F(Rewriting, GivesTheNameTheNewContentsAndLeavesNothingElse) {
  const URL original = makePicture("a.png");
  const int before = openDescriptors();
  rewrite(original);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(pictureNames(), "a.png");
  EXPECT_EQ(cacheNames(), "");
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Rewriting, WorksForANameThatIsNoText) {
  for (const std::string& name :
       {std::string("new\nline.png"), std::string("\xFF\xFE.png"), std::string("-rf.png"),
        std::string("%n;$(id).png"), std::string("\xE2\x80\xAEgnp.png"), std::string(251, 'x') + ".png"}) {
    rewrite(makePicture(name));
    EXPECT_EQ(textOf(picture(name)), kNew) << name;
    fs::remove(picture(name));
  }
  EXPECT_EQ(pictureNames(), "");
}

TEST_F(Rewriting, OfALinkReplacesTheFileAndKeepsTheLink) {
  makePicture("file.png");
  fs::create_symlink("file.png", picture("middle.png"));
  fs::create_symlink(picture("middle.png"), picture("link.png"));
  rewrite(versioned(url("link.png")));
  EXPECT_TRUE(fs::is_symlink(picture("link.png")));
  EXPECT_TRUE(fs::is_symlink(picture("middle.png")));
  EXPECT_FALSE(fs::is_symlink(picture("file.png")));
  EXPECT_EQ(textOf(picture("file.png")), kNew);
}

TEST_F(Rewriting, OfALinkIntoAnotherFolderWorksThere) {
  fs::create_directory(picture("other"));
  giveToOrdinaryUser(picture("other").c_str());
  makePicture("other/file.png");
  fs::create_symlink("other/file.png", picture("link.png"));
  writeFile(folder_.path("no folder"), "");
  setenv("XDG_CACHE_HOME", folder_.path("no folder").c_str(), 1);
  const URL folder = NSFileManager::defaultManager().URLForDirectory(
      NSSearchPathDirectory::itemReplacement, NSSearchPathDomainMask::user, url("link.png"), true);
  EXPECT_EQ(folder.deletingLastPathComponent().path(), fs::canonical(picture("other")).string());
}

TEST_F(Rewriting, RefusalNamesTheLinkAndNotItsFile) {
  makePicture("file.png");
  fs::create_symlink("file.png", picture("link.png"));
  const URL link = versioned(url("link.png"));
  writeFile(picture("file.png"), "somebody else's");
  EXPECT_EQ(sentenceOf([&] { rewrite(link); }),
            "The file “link.png” couldn’t be saved because it was changed by another program.");
}

TEST_F(Rewriting, LeavesOtherHardLinksTheOldPicture) {
  const URL original = makePicture("a.png");
  fs::create_hard_link(picture("a.png"), picture("b.png"));
  rewrite(versioned(original));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(textOf(picture("b.png")), kOld);
}

TEST_F(Rewriting, OfAFileThatIsGoneIsRefusedWhenItWasThere) {
  const URL original = makePicture("a.png");
  fs::remove(picture("a.png"));
  EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteUnknownError);
  EXPECT_EQ(pictureNames(), "");
}

TEST_F(Rewriting, OfAFileThatNeverWasMovesTheNewOneIntoPlace) {
  rewrite(url("a.png"));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_F(Rewriting, DoesWithoutARenameThatSparesOthersFiles) {
  FaultyFileCalls calls(FaultyFileCalls::failingAll("renameToNewName", EINVAL));
  const Service<FileCalls>::Override override(calls);
  rewrite(url("a.png"));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_F(Rewriting, RefusesWhatIsNoFile) {
  fs::create_directory(picture("folder.png"));
  ASSERT_EQ(mkfifo(picture("pipe.png").c_str(), 0666), 0);
  EXPECT_EQ(codeOf([&] { rewrite(url("folder.png")); }), NSFileWriteUnknownError);
  EXPECT_EQ(codeOf([&] { rewrite(url("pipe.png")); }), NSFileWriteUnknownError);
  EXPECT_TRUE(fs::is_directory(picture("folder.png")));
  EXPECT_TRUE(fs::is_fifo(picture("pipe.png")));
}

TEST_F(Rewriting, OfALinkThatLeadsNowhereIsRefusedWhenItLedToAFile) {
  makePicture("file.png");
  fs::create_symlink("file.png", picture("link.png"));
  const URL link = versioned(url("link.png"));
  fs::remove(picture("file.png"));
  EXPECT_EQ(codeOf([&] { rewrite(link); }), NSFileWriteUnknownError);
  EXPECT_EQ(pictureNames(), "link.png");
}

TEST_F(Rewriting, OfALoopOfLinksIsRefused) {
  fs::create_symlink("b.png", picture("a.png"));
  fs::create_symlink("a.png", picture("b.png"));
  EXPECT_EQ(codeOf([&] { rewrite(url("a.png")); }), NSFileWriteUnknownError);
}

// What another program did in the meantime wins, whenever it did it.

using Change = std::function<void(const std::string& path)>;

void replaceByAnother(const std::string& path) {
  writeFile(path + ".theirs", "theirs");
  fs::rename(path + ".theirs", path);
}
void writeInto(const std::string& path) { writeFile(path, "theirs"); }

class ChangedMeanwhile : public PicturesTest, public ::testing::WithParamInterface<Change> {};

TEST_P(ChangedMeanwhile, BeforeTheReplacementItIsSeenAtOnce) {
  const URL original = makePicture("a.png");
  GetParam()(picture("a.png"));
  EXPECT_EQ(sentenceOf([&] { rewrite(original); }),
            "The file “a.png” couldn’t be saved because it was changed by another program.");
  EXPECT_EQ(textOf(picture("a.png")), "theirs");
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_P(ChangedMeanwhile, AfterTheLastLookItIsPutBack) {
  const URL original = makePicture("a.png");
  FaultyFileCalls calls;
  calls.runBefore("exchange", [&] { GetParam()(picture("a.png")); });
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), "theirs");
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_P(ChangedMeanwhile, BeforeAPlainRenameItStays) {
  const URL original = makePicture("a.png");
  FaultyFileCalls calls(FaultyFileCalls::failingAll("exchange", EINVAL));
  calls.runBefore("exchange", [&] { GetParam()(picture("a.png")); });
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), "theirs");
}

INSTANTIATE_TEST_SUITE_P(ByAnotherProgram, ChangedMeanwhile, ::testing::Values(replaceByAnother, writeInto));

TEST_F(Rewriting, PutsBackAFileWhoseModeWasChangedAfterTheLastLook) {
  for (const int unknownExchange : {0, EINVAL}) {
    const URL original = makePicture("a.png");
    FaultyFileCalls calls(FaultyFileCalls::failingAll("exchange", unknownExchange));
    calls.runBefore("exchange", [&] { chmod(picture("a.png").c_str(), 0604); });
    const Service<FileCalls>::Override override(calls);
    EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteUnknownError);
    EXPECT_EQ(textOf(picture("a.png")), kOld);
    EXPECT_EQ(fs::status(picture("a.png")).permissions(), fs::perms(0604));
    fs::remove(picture("a.png"));
  }
}

TEST_F(Rewriting, KeepsTheNewestFileWhenTwoOthersCameBetween) {
  const URL original = makePicture("a.png");
  FaultyFileCalls calls;
  calls.runBefore("exchange", [&] { replaceByAnother(picture("a.png")); });
  calls.runAfter("exchange", [&] {
    writeFile(picture("b.png"), "newest");
    fs::rename(picture("b.png"), picture("a.png"));
  });
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), "newest");
}

TEST_F(Rewriting, PutsTheirsBackByARenameWhenItCannotBeExchangedBack) {
  const URL original = makePicture("a.png");
  int exchanges = 0;
  FaultyFileCalls calls(
      [&](int, const std::string& name) { return name == "exchange" && ++exchanges > 1 ? EIO : 0; });
  calls.runBefore("exchange", [&] { replaceByAnother(picture("a.png")); });
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), "theirs");
}

TEST_F(Rewriting, OfAFileThatIsRemovedInTheLastInstantLeavesItRemoved) {
  const URL original = makePicture("a.png");
  FaultyFileCalls calls;
  calls.runBefore("exchange", [&] { fs::remove(picture("a.png")); });
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileNoSuchFileError);
  EXPECT_EQ(pictureNames(), "");
}

TEST_F(Rewriting, FallsBackToARenameWhereAnExchangeIsUnknown) {
  for (const int error : {EINVAL, ENOSYS, EXDEV}) {
    const URL original = makePicture("a.png");
    FaultyFileCalls calls(FaultyFileCalls::failingAll("exchange", error));
    const Service<FileCalls>::Override override(calls);
    rewrite(original);
    EXPECT_EQ(textOf(picture("a.png")), kNew);
    EXPECT_EQ(pictureNames(), "a.png");
    EXPECT_EQ(cacheNames(), "");
  }
}

TEST_F(Rewriting, DoesWithoutReservationAndFolderSyncWhereTheyAreUnknown) {
  for (const char* name : {"reserve", "link"}) {
    const URL original = makePicture("a.png");
    FaultyFileCalls calls(FaultyFileCalls::failingAll(name, EOPNOTSUPP));
    const Service<FileCalls>::Override override(calls);
    rewrite(original);
    EXPECT_EQ(textOf(picture("a.png")), kNew) << name;
  }
}

TEST_F(Rewriting, SucceedsWhenOnlyTheOldFileCannotBeRemoved) {
  const URL original = makePicture("a.png");
  int removals = 0;
  // The first two are those of the probe.
  FaultyFileCalls failing(
      [&](int, const std::string& name) { return name == "remove" && ++removals == 3 ? EIO : 0; });
  const Service<FileCalls>::Override override(failing);
  rewrite(original);
  EXPECT_EQ(removals, 3);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_F(Rewriting, WaitsForTheFileAndThenForTheFolder) {
  const URL original = makePicture("a.png");
  FaultyFileCalls calls;
  const Service<FileCalls>::Override override(calls);
  rewrite(original);
  std::string order;
  for (const std::string& name : calls.names()) {
    if (name == "sync" || name == "exchange") order += name + " ";
  }
  EXPECT_EQ(order, "sync sync exchange sync ");
}

TEST_F(Rewriting, InAFolderThatMayNotBeWrittenIsRefusedForLackOfPermission) {
  const URL original = makePicture("a.png");
  fs::permissions(folder_.path("pictures"), fs::perms(0555));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteNoPermissionError);
              EXPECT_EQ(cacheNames(), "");
            }),
            0);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
  fs::permissions(folder_.path("pictures"), fs::perms(0755));
}

TEST_F(Rewriting, OfAReadOnlyFileWorksAndKeepsItReadOnly) {
  const URL original = makePicture("a.png");
  if (keepsUserAttributes(picture("a.png"))) setUserAttribute(picture("a.png"), "user.tag", "red");
  fs::permissions(picture("a.png"), fs::perms(0444));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { rewrite(versioned(original)); }), 0);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(modeOf(picture("a.png")), 0444U);
}

TEST_F(Rewriting, InAFolderThatCannotBeListedWorks) {
  const URL original = makePicture("a.png");
  fs::permissions(folder_.path("pictures"), fs::perms(0333));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { rewrite(original); }), 0);
  fs::permissions(folder_.path("pictures"), fs::perms(0755));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
}

TEST_F(Rewriting, OfSomebodyElsesFileIsRefusedBecauseItsOwnerWouldChange) {
  OSTRA_NEEDS_ROOT("give files away");
  const URL original = makePicture("a.png");
  ASSERT_EQ(chown(picture("a.png").c_str(), 12345, 65534), 0);
  fs::permissions(picture("a.png"), fs::perms(0664));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              EXPECT_EQ(codeOf([&] { rewrite(versioned(original)); }), NSFileWriteNoPermissionError);
            }),
            0);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

TEST_F(Rewriting, InAStickyFolderOfAnotherIsRefused) {
  OSTRA_NEEDS_ROOT("give folders away");
  const URL original = makePicture("a.png");
  ASSERT_EQ(chown(picture("a.png").c_str(), 12345, 65534), 0);
  ASSERT_EQ(chown(folder_.path("pictures").c_str(), 0, 0), 0);
  fs::permissions(folder_.path("pictures"), fs::perms(01777));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              EXPECT_EQ(codeOf([&] { rewrite(versioned(original)); }), NSFileWriteNoPermissionError);
            }),
            0);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

TEST_F(Rewriting, OfAnImmutableFileIsRefusedForLackOfPermission) {
  const URL original = makePicture("a.png");
  int flags = FS_IMMUTABLE_FL;
  const int file = open(picture("a.png").c_str(), O_RDONLY);
  const bool made = ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
  if (made) {
    EXPECT_EQ(codeOf([&] { rewrite(versioned(original)); }), NSFileWriteNoPermissionError);
    EXPECT_EQ(textOf(picture("a.png")), kOld);
  }
  flags = 0;
  ioctl(file, FS_IOC_SETFLAGS, &flags);
  close(file);
  if (!made) GTEST_SKIP() << "files cannot be made immutable here";
}

// A small disk of its own is mounted in a child process; 77 says that this is not allowed.

TEST_F(Rewriting, OnAFullDiskIsRefusedForLackOfSpaceAndLeavesNoPart) {
  const int status = runInChild([&] {
    if (!mountSmallDisk(folder_.path("pictures"), "size=64k,mode=777")) _exit(77);
    const URL original = makePicture("a.png");
    const std::string large(100'000, 'x');
    EXPECT_EQ(sentenceOf([&] { rewrite(original, large); }),
              "You can’t save the file “a.png” because the volume “pictures” is out of space.");
    EXPECT_EQ(textOf(picture("a.png")), kOld);
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path("pictures"))) {
      EXPECT_TRUE(entry.is_directory() || entry.path() == picture("a.png")) << entry.path();
    }
  });
  if (status == 77) GTEST_SKIP() << "no disk can be mounted here";
  EXPECT_EQ(status, 0);
}

TEST_F(Rewriting, OnAReadOnlyDiskIsRefusedAsThat) {
  const int status = runInChild([&] {
    if (!mountSmallDisk(folder_.path("pictures"), "size=64k,mode=777")) _exit(77);
    const URL original = makePicture("a.png");
    if (mount(nullptr, folder_.path("pictures").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
      _exit(77);
    EXPECT_EQ(codeOf([&] { rewrite(original); }), NSFileWriteVolumeReadOnlyError);
  });
  if (status == 77) GTEST_SKIP() << "no disk can be mounted here";
  EXPECT_EQ(status, 0);
}

TEST_F(Rewriting, OnAnotherDiskThanTheCacheWorksBesideThePicture) {
  const int status = runInChild([&] {
    if (!mountSmallDisk(folder_.path("pictures"), "size=1m,mode=777")) _exit(77);
    const URL original = makePicture("a.png");
    rewrite(original);
    EXPECT_EQ(textOf(picture("a.png")), kNew);
    EXPECT_EQ(pictureNames(), "a.png");
    EXPECT_EQ(cacheNames(), "");
  });
  if (status == 77) GTEST_SKIP() << "no disk can be mounted here";
  EXPECT_EQ(status, 0);
}

TEST_F(Rewriting, BeyondTheLargestFileSizeIsAFailureOfThatFileOnly) {
  const URL original = makePicture("a.png");
  EXPECT_EQ(runInChild([&] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit limit = {1000, 1000};
              setrlimit(RLIMIT_FSIZE, &limit);
              EXPECT_EQ(codeOf([&] { rewrite(original, std::string(2000, 'x')); }), NSFileWriteUnknownError);
              rewrite(original);
            }),
            0);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
}

}  // namespace
}  // namespace ostra::test
