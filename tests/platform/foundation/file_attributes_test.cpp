#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/foundation/service.h"
#include "tests/platform/foundation/faulty_file_calls.h"
#include "tests/platform/foundation/pictures.h"
#include "tests/support/child.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

using Attributes = PicturesTest;

std::string accessListOf(const std::string& path) {
  return runProgram({"getfacl", "--omit-header", "--absolute-names", "--numeric", path}).output;
}

TEST_F(Attributes, ModeIsKeptWithAllItsBits) {
  for (const unsigned mode : {0600U, 0644U, 0666U, 0777U, 0400U, 02755U, 02660U, 04755U}) {
    const URL original = makePicture("a.png");
    fs::permissions(picture("a.png"), fs::perms(mode));
    rewrite(versioned(original));
    EXPECT_EQ(textOf(picture("a.png")), kNew);
    EXPECT_EQ(modeOf(picture("a.png")), mode) << std::oct << mode;
    fs::remove(picture("a.png"));
  }
}

TEST_F(Attributes, OwnerAndGroupAreKept) {
  OSTRA_NEEDS_ROOT("give files away");
  const URL original = makePicture("a.png");
  ASSERT_EQ(chown(picture("a.png").c_str(), 12345, 23456), 0);
  fs::permissions(picture("a.png"), fs::perms(06751));
  rewrite(versioned(original));
  struct stat status = {};
  ASSERT_EQ(stat(picture("a.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 12345U);
  EXPECT_EQ(status.st_gid, 23456U);
  EXPECT_EQ(modeOf(picture("a.png")), 06751U);
}

TEST_F(Attributes, OfTheUserAreKept) {
  const URL original = makePicture("a.png");
  if (!keepsUserAttributes(picture("a.png"))) GTEST_SKIP() << "no user attributes on this file system";
  setUserAttribute(picture("a.png"), "user.xdg.tags", "holiday,red");
  setUserAttribute(picture("a.png"), "user.empty", "");
  setUserAttribute(picture("a.png"), "user.bytes", std::string_view("\0\xFF\n", 3));
  rewrite(versioned(original));
  EXPECT_EQ(userAttribute(picture("a.png"), "user.xdg.tags"), "holiday,red");
  EXPECT_EQ(userAttribute(picture("a.png"), "user.empty"), "");
  EXPECT_EQ(userAttribute(picture("a.png"), "user.bytes"), std::string("\0\xFF\n", 3));
}

TEST_F(Attributes, OfTheUserAreKeptOnAReadOnlyFileToo) {
  const URL original = makePicture("a.png");
  if (!keepsUserAttributes(picture("a.png"))) GTEST_SKIP() << "no user attributes on this file system";
  setUserAttribute(picture("a.png"), "user.tag", "red");
  fs::permissions(picture("a.png"), fs::perms(0444));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { rewrite(versioned(original)); }), 0);
  EXPECT_EQ(userAttribute(picture("a.png"), "user.tag"), "red");
  EXPECT_EQ(modeOf(picture("a.png")), 0444U);
}

TEST_F(Attributes, AccessListIsKept) {
  OSTRA_NEEDS_PROGRAM("setfacl");
  const URL original = makePicture("a.png");
  const auto set = runProgram({"setfacl", "-m", "u:12345:rw,g:23456:r,m::rw", picture("a.png")});
  if (set.status != 0) GTEST_SKIP() << "no access lists on this file system: " << set.errors;
  const std::string before = accessListOf(picture("a.png"));
  ASSERT_NE(before.find("user:12345:rw-"), std::string::npos) << before;
  rewrite(versioned(original));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(accessListOf(picture("a.png")), before);
}

TEST_F(Attributes, AccessListThatTheFolderGivesNewFilesIsNotTakenOver) {
  OSTRA_NEEDS_PROGRAM("setfacl");
  const URL original = makePicture("a.png");
  const std::string before = accessListOf(picture("a.png"));
  // Beside the picture, because the cache is no folder.
  writeFile(folder_.path("no folder"), "");
  setenv("XDG_CACHE_HOME", folder_.path("no folder").c_str(), 1);
  const auto set = runProgram({"setfacl", "-d", "-m", "u:12345:rw", folder_.path("pictures")});
  if (set.status != 0) GTEST_SKIP() << "no access lists on this file system: " << set.errors;
  rewrite(versioned(original));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(accessListOf(picture("a.png")), before);
}

TEST_F(Attributes, FlagsOfTheFileSystemAreKept) {
  const URL original = makePicture("a.png");
  int flags = FS_NODUMP_FL;
  const int old = open(picture("a.png").c_str(), O_RDONLY);
  const bool set = ioctl(old, FS_IOC_SETFLAGS, &flags) == 0;
  close(old);
  if (!set) GTEST_SKIP() << "no such flags on this file system";
  rewrite(versioned(original));
  flags = 0;
  const int fresh = open(picture("a.png").c_str(), O_RDONLY);
  EXPECT_EQ(ioctl(fresh, FS_IOC_GETFLAGS, &flags), 0);
  close(fresh);
  EXPECT_NE(flags & FS_NODUMP_FL, 0);
}

TEST_F(Attributes, ThatCannotBeKeptAreARefusal) {
  OSTRA_NEEDS_PROGRAM("setfacl");
  for (const char* call : {"setOwner", "setMode", "setAttribute"}) {
    OSTRA_NEEDS_ROOT("give files away");
    const URL original = makePicture("a.png");
    ASSERT_EQ(chown(picture("a.png").c_str(), 12345, 23456), 0);
    fs::permissions(picture("a.png"), fs::perms(0640));
    if (!keepsUserAttributes(picture("a.png"))) GTEST_SKIP() << "no user attributes on this file system";
    setUserAttribute(picture("a.png"), "user.tag", "red");
    FaultyFileCalls calls(FaultyFileCalls::failingAll(call, EPERM));
    const Service<FileCalls>::Override override(calls);
    EXPECT_EQ(codeOf([&] { rewrite(versioned(original)); }), NSFileWriteNoPermissionError) << call;
    EXPECT_EQ(textOf(picture("a.png")), kOld) << call;
    EXPECT_EQ(userAttribute(picture("a.png"), "user.tag"), "red") << call;
  }
}

TEST_F(Attributes, ThatTheDiskDoesNotKnowAreARefusalWhenThePictureHasThem) {
  const URL original = makePicture("a.png");
  if (!keepsUserAttributes(picture("a.png"))) GTEST_SKIP() << "no user attributes on this file system";
  setUserAttribute(picture("a.png"), "user.tag", "red");
  FaultyFileCalls calls(FaultyFileCalls::failingAll("setAttribute", EOPNOTSUPP));
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(versioned(original)); }), NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

TEST_F(Attributes, ModeThatIsDroppedWithoutAWordIsARefusal) {
  struct Deaf : FileCalls {
    int setMode(int, unsigned) override { return 0; }
  } calls;
  const URL original = makePicture("a.png");
  fs::permissions(picture("a.png"), fs::perms(0640));
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { rewrite(versioned(original)); }), NSFileWriteNoPermissionError);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

TEST_F(Attributes, SecurityLabelIsKeptWhereThatIsAllowedAndNoReasonToRefuse) {
  OSTRA_NEEDS_ROOT("set security labels");
  const URL original = makePicture("a.png");
  if (setxattr(picture("a.png").c_str(), "security.ostra", "x", 1, 0) != 0) GTEST_SKIP() << "no labels here";
  rewrite(versioned(original));
  EXPECT_EQ(userAttribute(picture("a.png"), "security.ostra"), "x");
  FaultyFileCalls calls(FaultyFileCalls::failingAll("setAttribute", EPERM));
  const Service<FileCalls>::Override override(calls);
  rewrite(versioned(original), kOld);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

}  // namespace
}  // namespace ostra::test
