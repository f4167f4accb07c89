#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

std::string outputOf(const std::vector<std::string>& command) { return runProgram(command).output; }

struct stat statusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

class Files : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    makePicture(picture);
    before = readFile(picture);
  }
  void invert(const std::string& path) const {
    const ProgramResult result = program.run({"invert", path});
    ASSERT_EQ(result.status, 0) << result.errors;
  }

  InstalledProgram program;
  TemporaryFolder folder;
  std::string picture = folder.path("a.png");
  Bytes before;
};

TEST_F(Files, ARewrittenPictureKeepsModeOwnerAclAndAttributes) {
  OSTRA_NEEDS_PROGRAM("setfacl");
  OSTRA_NEEDS_PROGRAM("setfattr");
  ASSERT_EQ(chmod(picture.c_str(), 0640), 0);
  ASSERT_TRUE(geteuid() != 0 || chown(picture.c_str(), 1234, 2345) == 0);
  ASSERT_EQ(runProgram({"setfacl", "-m", "u:4321:rw,g:99:r", picture}).status, 0);
  ASSERT_EQ(runProgram({"setfattr", "-n", "user.xdg.tags", "-v", "holiday,sea", picture}).status, 0);
  const std::string acl = outputOf({"getfacl", "-p", picture});
  const std::string attributes = outputOf({"getfattr", "-d", "--absolute-names", picture});
  const struct stat old = statusOf(picture);
  invert(picture);
  const struct stat now = statusOf(picture);
  EXPECT_NE(readFile(picture), before);
  EXPECT_EQ(now.st_mode, old.st_mode);
  EXPECT_EQ(now.st_uid, old.st_uid);
  EXPECT_EQ(now.st_gid, old.st_gid);
  EXPECT_EQ(outputOf({"getfacl", "-p", picture}), acl);
  EXPECT_EQ(outputOf({"getfattr", "-d", "--absolute-names", picture}), attributes);
  EXPECT_THAT(attributes, testing::HasSubstr("holiday,sea"));
}

TEST_F(Files, ALinkStaysALinkAndItsFileIsConverted) {
  fs::create_directory(folder.path("real"));
  fs::rename(picture, folder.path("real/b.png"));
  fs::create_symlink("real/b.png", picture);
  invert(picture);
  EXPECT_TRUE(fs::is_symlink(picture));
  EXPECT_NE(readFile(folder.path("real/b.png")), before);
}

TEST_F(Files, AnotherHardLinkKeepsTheOldPicture) {
  fs::create_hard_link(picture, folder.path("other.png"));
  invert(picture);
  EXPECT_EQ(readFile(folder.path("other.png")), before);
  EXPECT_NE(readFile(picture), before);
}

TEST_F(Files, NothingIsLeftBesideThePictureOrInTheCache) {
  invert(picture);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.png"});
}

TEST_F(Files, PathsCanComeFromAListSeparatedByZeroes) {
  fs::copy_file(picture, folder.path("b\nc.png"));
  ProgramOptions options;
  options.input = picture + '\0' + folder.path("b\nc.png") + '\0';
  const ProgramResult result = program.run({"--files-from=-", "invert"}, options);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_NE(readFile(picture), before);
  EXPECT_NE(readFile(folder.path("b\nc.png")), before);
}

TEST_F(Files, ADestinationThatIsAFolderIsRefused) {
  fs::create_directory(folder.path("a.jpg"));
  const ProgramResult result = program.run({"jpg", picture});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("a.png: could not write a.jpg: "));
  EXPECT_TRUE(fs::is_directory(folder.path("a.jpg")));
}

TEST_F(Files, TheSameFileGivenTwiceIsConvertedTwice) {
  const auto pixels = samples8(picture, "RGB");
  const ProgramResult result = program.run({"invert", picture, picture});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(samples8(picture, "RGB"), pixels);
}

}  // namespace
}  // namespace ostra::test
