#include "platform/foundation/data.h"

#include <cerrno>
#include <csignal>
#include <filesystem>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/foundation/service.h"
#include "tests/platform/foundation/faulty_file_calls.h"
#include "tests/platform/foundation/pictures.h"
#include "tests/support/child.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

constexpr auto kPlain = NSDataWritingOptions::none;
constexpr auto kAtomic = NSDataWritingOptions::atomic;

ByteView view(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

ino_t inodeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_ino;
}

class Writing : public PicturesTest {
 protected:
  void write(std::string_view name, std::string_view text, NSDataWritingOptions options = kPlain) const {
    writeToURL(view(text), url(name), options);
  }
};

TEST_F(Writing, MakesANewFileWithTheUsualMode) {
  const mode_t before = umask(027);
  write("plain.png", kNew);
  write("atomic.png", kNew, kAtomic);
  umask(before);
  EXPECT_EQ(textOf(picture("plain.png")), kNew);
  EXPECT_EQ(textOf(picture("atomic.png")), kNew);
  EXPECT_EQ(modeOf(picture("plain.png")), 0640U);
  EXPECT_EQ(modeOf(picture("atomic.png")), 0640U);
  EXPECT_EQ(pictureNames(), "atomic.png plain.png");
}

TEST_F(Writing, OfNothingMakesAnEmptyFile) {
  write("plain.png", "");
  write("atomic.png", "", kAtomic);
  EXPECT_EQ(textOf(picture("plain.png")), "");
  EXPECT_EQ(textOf(picture("atomic.png")), "");
}

TEST_F(Writing, IntoAnExistingFileKeepsTheFileAndItsMode) {
  makePicture("a.png");
  fs::permissions(picture("a.png"), fs::perms(0640));
  const ino_t before = inodeOf(picture("a.png"));
  for (const std::string_view text : {kNew, std::string_view("x"), kOld, std::string_view("")}) {
    write("a.png", text);
    EXPECT_EQ(textOf(picture("a.png")), text);
  }
  EXPECT_EQ(inodeOf(picture("a.png")), before);
  EXPECT_EQ(modeOf(picture("a.png")), 0640U);
}

TEST_F(Writing, AtomicallyPutsAnotherFileInPlaceWithTheModeAndTheAttributesOfTheOld) {
  makePicture("a.png");
  fs::permissions(picture("a.png"), fs::perms(0640));
  const bool attributes = keepsUserAttributes(picture("a.png"));
  if (attributes) setUserAttribute(picture("a.png"), "user.tag", "red");
  const ino_t before = inodeOf(picture("a.png"));
  write("a.png", kNew, kAtomic);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_NE(inodeOf(picture("a.png")), before);
  EXPECT_EQ(modeOf(picture("a.png")), 0640U);
  if (attributes) {
    EXPECT_EQ(userAttribute(picture("a.png"), "user.tag"), "red");
  }
  EXPECT_EQ(pictureNames(), "a.png");
}

TEST_F(Writing, AtomicallyOverSomebodyElsesFileKeepsAtLeastItsMode) {
  OSTRA_NEEDS_ROOT("give files away");
  makePicture("a.png");
  ASSERT_EQ(chown(picture("a.png").c_str(), 12345, 12345), 0);
  fs::permissions(picture("a.png"), fs::perms(0666));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { write("a.png", kNew, kAtomic); }), 0);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(modeOf(picture("a.png")), 0666U);
}

TEST_F(Writing, FollowsLinksEvenToAFileThatIsNotThereYet) {
  for (const auto options : {kPlain, kAtomic}) {
    fs::create_symlink("file.png", picture("link.png"));
    write("link.png", kNew, options);
    EXPECT_TRUE(fs::is_symlink(picture("link.png")));
    EXPECT_EQ(textOf(picture("file.png")), kNew);
    write("link.png", kOld, options);
    EXPECT_EQ(textOf(picture("file.png")), kOld);
    EXPECT_TRUE(fs::is_symlink(picture("link.png")));
    fs::remove(picture("link.png"));
    fs::remove(picture("file.png"));
  }
}

TEST_F(Writing, ToWhatIsNoFileIsRefused) {
  fs::create_directory(picture("folder"));
  ASSERT_EQ(mkfifo(picture("pipe").c_str(), 0666), 0);
  EXPECT_EQ(codeOf([&] { write("folder", kNew); }), NSFileWriteUnknownError);
  EXPECT_EQ(codeOf([&] { write("folder", kNew, kAtomic); }), NSFileWriteUnknownError);
  EXPECT_EQ(codeOf([&] { write("pipe", kNew); }), NSFileWriteUnknownError);
  EXPECT_EQ(codeOf([&] { write("missing/a.png", kNew); }), NSFileNoSuchFileError);
  EXPECT_EQ(codeOf([&] { write(std::string(256, 'x'), kNew); }), NSFileWriteInvalidFileNameError);
  EXPECT_EQ(pictureNames(), "folder pipe");
}

TEST_F(Writing, ToAURLOfAnotherSchemeIsRefused) {
  const std::string_view text = "https://example.org/a.png";
  const auto url = URL::withDataRepresentation(view(text));
  EXPECT_EQ(codeOf([&] { writeToURL({}, *url); }), NSFileWriteUnsupportedSchemeError);
}

TEST_F(Writing, WithoutPermissionIsRefusedAsThat) {
  makePicture("a.png");
  fs::permissions(picture("a.png"), fs::perms(0444));
  EXPECT_EQ(runInChildAsOrdinaryUser(
                [&] { EXPECT_EQ(codeOf([&] { write("a.png", kNew); }), NSFileWriteNoPermissionError); }),
            0);
  fs::permissions(folder_.path("pictures"), fs::perms(0555));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              EXPECT_EQ(codeOf([&] { write("b.png", kNew); }), NSFileWriteNoPermissionError);
              EXPECT_EQ(codeOf([&] { write("b.png", kNew, kAtomic); }), NSFileWriteNoPermissionError);
            }),
            0);
  fs::permissions(folder_.path("pictures"), fs::perms(0755));
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

TEST_F(Writing, OnAFullDiskRemovesTheNewFileAndSparesTheOld) {
  const int status = runInChild([&] {
    if (!mountSmallDisk(folder_.path("pictures"), "size=64k,mode=777")) _exit(77);
    makePicture("old.png");
    const std::string large(100'000, 'x');
    for (const auto options : {kPlain, kAtomic}) {
      EXPECT_EQ(codeOf([&] { write("new.png", large, options); }), NSFileWriteOutOfSpaceError);
      EXPECT_EQ(codeOf([&] { write("old.png", large, options); }), NSFileWriteOutOfSpaceError);
    }
    EXPECT_EQ(textOf(picture("old.png")), kOld);
    EXPECT_EQ(pictureNames(), "old.png");
  });
  if (status == 77) GTEST_SKIP() << "no disk can be mounted here";
  EXPECT_EQ(status, 0);
}

TEST_F(Writing, BeyondTheLargestFileSizeRemovesTheNewFile) {
  EXPECT_EQ(runInChild([&] {
              signal(SIGXFSZ, SIG_IGN);
              const rlimit limit = {1000, 1000};
              setrlimit(RLIMIT_FSIZE, &limit);
              EXPECT_EQ(codeOf([&] { write("a.png", std::string(2000, 'x')); }), NSFileWriteUnknownError);
            }),
            0);
  EXPECT_EQ(pictureNames(), "");
}

TEST_F(Writing, RemovesWhatItCreatedWhicheverCallFails) {
  for (const auto options : {kPlain, kAtomic}) {
    const int before = openDescriptors();
    for (int number = 1;; ++number) {
      FaultyFileCalls calls(FaultyFileCalls::failing(number, EIO));
      const Service<FileCalls>::Override override(calls);
      const std::int64_t code = codeOf([&] { write("a.png", kNew, options); });
      if (calls.count() < number) break;
      // After the rename the name is taken: what is there is whole.
      if (fs::exists(picture("a.png"))) {
        EXPECT_EQ(textOf(picture("a.png")), kNew) << number;
        EXPECT_EQ(options, kAtomic) << number;
        fs::remove(picture("a.png"));
      }
      EXPECT_EQ(code, NSFileWriteUnknownError) << number;
      EXPECT_EQ(pictureNames(), "") << number;
    }
    EXPECT_EQ(textOf(picture("a.png")), kNew);
    EXPECT_EQ(openDescriptors(), before);
    fs::remove(picture("a.png"));
  }
}

TEST_F(Writing, AtomicallyLeavesOldOrNewWhicheverCallFails) {
  for (int number = 1;; ++number) {
    makePicture("a.png");
    FaultyFileCalls calls(FaultyFileCalls::failing(number, EIO));
    const Service<FileCalls>::Override override(calls);
    const std::int64_t code = codeOf([&] { write("a.png", kNew, kAtomic); });
    if (calls.count() < number) break;
    const std::string text = textOf(picture("a.png"));
    EXPECT_TRUE(text == kNew || (text == kOld && code != 0)) << number << " " << text;
    EXPECT_EQ(pictureNames(), "a.png") << number;
  }
}

TEST_F(Writing, NoticesWritesThatLie) {
  struct Liar : FileCalls {
    int write(int, std::span<const std::uint8_t> bytes, std::size_t& written) override {
      written = bytes.size();
      return 0;
    }
  } calls;
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { write("a.png", kNew); }), NSFileWriteUnknownError);
  EXPECT_EQ(pictureNames(), "");
}

TEST_F(Writing, LeavesAFileThatSomebodyElsePutInItsPlace) {
  FaultyFileCalls calls(FaultyFileCalls::failingAll("sync", EIO));
  calls.runBefore("sync", [&] {
    writeFile(picture("b.png"), "theirs");
    fs::rename(picture("b.png"), picture("a.png"));
  });
  const Service<FileCalls>::Override override(calls);
  EXPECT_EQ(codeOf([&] { write("a.png", kNew); }), NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), "theirs");
}

TEST_F(Writing, ReservesTheRoomFirstAndWaitsForFileAndFolder) {
  FaultyFileCalls calls;
  const Service<FileCalls>::Override override(calls);
  write("a.png", "12345678");
  EXPECT_EQ(calls.names(), (std::vector<std::string>{"reserve", "write", "sync", "sync", "close"}));
}

}  // namespace
}  // namespace ostra::test
