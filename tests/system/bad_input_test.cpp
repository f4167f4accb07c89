#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using testing::HasSubstr;

/// Each test puts one bad file between two good ones: it is one sentence, the good ones are converted.
class BadInput : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    makePicture(folder.path("1.png"), {"-colorspace", "gray"});
    makePicture(folder.path("3.png"), {"-colorspace", "gray"});
    first_ = samples8(folder.path("1.png"), "R");
  }

  // The sentence told about `name` when it is converted together with the good pictures.
  std::string complaintAbout(const std::string& name, const std::string& action = "invert",
                             bool asUser = false) {
    ProgramOptions options;
    options.asOrdinaryUser = asUser;
    if (asUser) std::filesystem::permissions(folder.path(), std::filesystem::perms(0777));
    if (asUser) {
      for (const char* good : {"1.png", "3.png"})
        EXPECT_EQ(chown(folder.path(good).c_str(), 65534, 65534), 0);
    }
    const ProgramResult result =
        program.run({action, "--", folder.path("1.png"), folder.path(name), folder.path("3.png")}, options);
    EXPECT_EQ(result.status, 1) << result.errors;
    expectInverted("1.png");
    expectInverted("3.png");
    return sentencesNaming(result.errors, name);
  }

  void expectInverted(const std::string& name) const {
    const auto now = samples8(folder.path(name), "R");
    ASSERT_EQ(now.size(), first_.size());
    for (std::size_t i = 0; i < now.size(); ++i) ASSERT_EQ(now[i], 255 - first_[i]) << name;
  }

  static std::string sentencesNaming(const std::string& text, const std::string& name) {
    std::string found;
    std::size_t begin = 0;
    while (begin < text.size()) {
      const std::size_t end = std::min(text.find('\n', begin), text.size());
      const std::string line = text.substr(begin, end - begin);
      if (const std::size_t at = line.find(name + ": "); at != std::string::npos) found += line.substr(at);
      begin = end + 1;
    }
    return found;
  }

  InstalledProgram program;
  TemporaryFolder folder;

 private:
  std::vector<std::uint8_t> first_;
};

TEST_F(BadInput, ATextFileNamedPngIsNotAnImage) {
  writeFile(folder.path("x.png"), "not a picture\n");
  EXPECT_EQ(complaintAbout("x.png"), "x.png: not an image ImageIO can read.");
  EXPECT_EQ(readFile(folder.path("x.png")).size(), 14u);
}

TEST_F(BadInput, AnEmptyFileIsNotAnImage) {
  writeFile(folder.path("x.png"), "");
  EXPECT_EQ(complaintAbout("x.png"), "x.png: not an image ImageIO can read.");
}

TEST_F(BadInput, AFolderIsOneSentence) {
  std::filesystem::create_directory(folder.path("x.png"));
  EXPECT_THAT(complaintAbout("x.png"), HasSubstr("x.png: "));
}

TEST_F(BadInput, APipeIsOneSentenceAndDoesNotHang) {
  ASSERT_EQ(mkfifo(folder.path("x.png").c_str(), 0600), 0);
  EXPECT_THAT(complaintAbout("x.png"), HasSubstr("x.png: "));
}

TEST_F(BadInput, ADeviceIsOneSentence) {
  std::filesystem::create_symlink("/dev/zero", folder.path("x.png"));
  EXPECT_THAT(complaintAbout("x.png"), HasSubstr("x.png: "));
}

TEST_F(BadInput, ADanglingLinkSaysThatItLeadsNowhere) {
  std::filesystem::create_symlink("nowhere.png", folder.path("x.png"));
  EXPECT_THAT(complaintAbout("x.png"), HasSubstr("link to a file that does not exist."));
}

TEST_F(BadInput, AMissingFileSaysThatThereIsNone) {
  EXPECT_THAT(complaintAbout("x.png"), HasSubstr("no such file"));
}

TEST_F(BadInput, AnUnreadableFileSaysThatPermissionIsMissing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  makePicture(folder.path("x.png"));
  ASSERT_EQ(chmod(folder.path("x.png").c_str(), 0), 0);
  EXPECT_THAT(complaintAbout("x.png", "invert", true), HasSubstr("permission"));
}

TEST_F(BadInput, ANameThatIsNotUtf8IsConverted) {
  const std::string name = "\xe4\xff.png";
  std::filesystem::copy_file(folder.path("1.png"), folder.path(name));
  const ProgramResult result = program.run({"invert", folder.path(name)});
  EXPECT_EQ(result.status, 0) << result.errors;
  expectInverted(name);
}

TEST_F(BadInput, NamesThatShellsAndTerminalsMindAreConverted) {
  for (const std::string name : {"-x.png", "a b.png", "a\nb.png", "100%n.png", "$(id);.png",
                                 "\xe2\x80\xae"
                                 "gnp.png"}) {
    std::filesystem::copy_file(folder.path("3.png"), folder.path("copy"));
    std::filesystem::rename(folder.path("copy"), folder.path(name));
    const ProgramResult result = program.run({"invert", "--", folder.path(name)});
    EXPECT_EQ(result.status, 0) << name << result.errors;
    expectInverted(name);
  }
}

TEST_F(BadInput, HalfAPictureIsNotDecoded) {
  for (const char* name : {"x.png", "x.jpg"}) {
    makePicture(folder.path(name));
    Bytes bytes = readFile(folder.path(name));
    bytes.resize(bytes.size() / 2);
    writeFile(folder.path(name), bytes);
    // The good pictures were inverted in the round before.
    const ProgramResult result = program.run({"invert", folder.path(name)});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(std::string(name) + ": the image could not be decoded."));
    EXPECT_EQ(readFile(folder.path(name)), bytes);
  }
}

TEST_F(BadInput, SixtyFiveThousandSquareClaimedPixelsAreRefusedAtOnce) {
  makePicture(folder.path("x.png"), {"-colorspace", "gray"});
  Bytes bytes = readFile(folder.path("x.png"));
  // Width, height, 8 bits gray, and the right checksum, or the file would be refused for that.
  const Bytes header = {0, 0, 0xfd, 0xe8, 0, 0, 0xfd, 0xe8, 8, 0, 0, 0, 0, 0x87, 0x3c, 0x86, 0xd6};
  std::copy(header.begin(), header.end(), bytes.begin() + 16);
  writeFile(folder.path("x.png"), bytes);
  EXPECT_THAT(complaintAbout("x.png"), HasSubstr("x.png: the image could not be decoded."));
  EXPECT_EQ(readFile(folder.path("x.png")), bytes);
}

TEST_F(BadInput, AReadOnlyFolderRefusesARewriteAndASiblingAsksNobody) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  makePicture(folder.path("x.png"));
  const Bytes before = readFile(folder.path("x.png"));
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
  ProgramOptions user;
  user.asOrdinaryUser = true;
  const ProgramResult rewrite = program.run({"invert", folder.path("x.png")}, user);
  EXPECT_EQ(rewrite.status, 1);
  EXPECT_THAT(rewrite.errors, HasSubstr("x.png: could not rewrite the file: "));
  const ProgramResult sibling = program.run({"--ui=none", "jpg", folder.path("x.png")}, user);
  EXPECT_EQ(sibling.status, 1);
  EXPECT_THAT(sibling.errors, HasSubstr("x.png: save cancelled."));
  EXPECT_EQ(readFile(folder.path("x.png")), before);
}

TEST_F(BadInput, AFullDiskLosesNothing) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can mount a small disk";
  const TemporaryFolder mountPoint;
  const ProgramResult mount =
      runProgram({"mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", mountPoint.path()});
  if (mount.status != 0) GTEST_SKIP() << "cannot mount here: " << mount.errors;
  convert({"-size", "64x64", "xc:red", mountPoint.path("x.png")});
  const Bytes before = readFile(mountPoint.path("x.png"));
  writeFile(mountPoint.path("fill"), Bytes(1));
  for (std::size_t size = 60 << 10; size > 0; size -= 1 << 10) {
    try {
      writeFile(mountPoint.path("fill"), Bytes(size));
      break;
    } catch (const std::exception&) {
    }
  }
  const ProgramResult rewrite = program.run({"invert", mountPoint.path("x.png")});
  const ProgramResult sibling = program.run({"jpg", mountPoint.path("x.png")});
  const Bytes after = readFile(mountPoint.path("x.png"));
  const auto names = mountPoint.names();
  runProgram({"umount", mountPoint.path()});
  EXPECT_EQ(rewrite.status, 1);
  EXPECT_THAT(rewrite.errors, HasSubstr("x.png: could not rewrite the file: "));
  EXPECT_EQ(sibling.status, 1);
  EXPECT_THAT(sibling.errors, HasSubstr("x.png: could not write x.jpg: "));
  EXPECT_EQ(after, before);
  EXPECT_EQ(std::count(names.begin(), names.end(), "x.jpg"), 0);
}

TEST_F(BadInput, NoFileAtAllIsTheRequestsOwnRefusal) {
  const ProgramResult result = program.run({"invert"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("No image was selected."));
}

TEST_F(BadInput, TheProfileConversionSaysThatItIsNotThere) {
  const ProgramResult result = program.run({"convert-color-profile", folder.path("1.png")});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
}

}  // namespace
}  // namespace ostra::test
