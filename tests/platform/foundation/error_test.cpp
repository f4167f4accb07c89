#include "platform/foundation/error.h"

#include <cerrno>
#include <clocale>
#include <new>
#include <stdexcept>
#include <tuple>

#include <gtest/gtest.h>

namespace ostra {
namespace {

constexpr FileAccess kRead = FileAccess::read;
constexpr FileAccess kWrite = FileAccess::write;

std::string sentence(std::int64_t code) {
  return NSError(NSCocoaErrorDomain, code, {{std::string(NSFilePathErrorKey), "/nowhere/at all/a.png"}})
      .localizedDescription();
}

std::string namelessSentence(std::int64_t code) {
  return NSError(NSCocoaErrorDomain, code).localizedDescription();
}

TEST(FileError, CodeDependsOnTheErrnoAndOnWhatWasTried) {
  const std::tuple<int, std::int64_t, std::int64_t> cases[] = {
      {ENOENT, 260, 4},   {EPERM, 257, 513},  {EACCES, 257, 513}, {ENAMETOOLONG, 258, 514},
      {EFBIG, 263, 512},  {ENOSPC, 256, 640}, {EDQUOT, 256, 640}, {EROFS, 256, 642},
      {EEXIST, 256, 516}, {EIO, 256, 512},    {EISDIR, 256, 512}, {ENOTDIR, 256, 512},
      {ELOOP, 256, 512},  {EMFILE, 256, 512}, {EBUSY, 256, 512},
  };
  for (const auto& [number, reading, writing] : cases) {
    EXPECT_EQ(fileError(number, kRead, "/x").code(), reading) << number;
    EXPECT_EQ(fileError(number, kWrite, "/x").code(), writing) << number;
    EXPECT_EQ(fileError(number, kWrite, "/x").domain(), NSCocoaErrorDomain);
  }
}

TEST(FileError, CarriesThePathAndTheErrno) {
  const NSError error = fileError(EACCES, kWrite, "/a/b.png");
  EXPECT_EQ(std::get<std::string>(error.userInfo().find(NSFilePathErrorKey)->second), "/a/b.png");
  ASSERT_NE(error.underlyingError(), nullptr);
  EXPECT_EQ(error.underlyingError()->domain(), NSPOSIXErrorDomain);
  EXPECT_EQ(error.underlyingError()->code(), EACCES);
}

TEST(ErrorSentence, NamesTheFileAndItsFolder) {
  EXPECT_EQ(sentence(4), "The file “a.png” doesn’t exist.");
  EXPECT_EQ(sentence(256), "The file “a.png” couldn’t be opened.");
  EXPECT_EQ(sentence(257),
            "The file “a.png” couldn’t be opened because you don’t have permission to view it.");
  EXPECT_EQ(sentence(259), "The file “a.png” couldn’t be opened because it isn’t in the correct format.");
  EXPECT_EQ(sentence(260), "The file “a.png” couldn’t be opened because there is no such file.");
  EXPECT_EQ(sentence(512), "The file “a.png” couldn’t be saved in the folder “at all”.");
  EXPECT_EQ(sentence(513), "You don’t have permission to save the file “a.png” in the folder “at all”.");
  EXPECT_EQ(sentence(514), "The item couldn’t be saved because the file name “a.png” is invalid.");
  EXPECT_EQ(
      sentence(516),
      "The file “a.png” couldn’t be saved in the folder “at all” because a file with the same name already "
      "exists.");
  EXPECT_EQ(sentence(640), "You can’t save the file “a.png” because there isn’t enough space.");
  EXPECT_EQ(sentence(642), "You can’t save the file “a.png” because the volume is read only.");
  EXPECT_EQ(sentence(3072), "The operation was cancelled.");
  EXPECT_EQ(sentence(263), "The operation couldn’t be completed. (Cocoa error 263.)");
}

TEST(ErrorSentence, DoesWithoutTheNameOfAnUnknownFile) {
  EXPECT_EQ(namelessSentence(4), "The file doesn’t exist.");
  EXPECT_EQ(namelessSentence(260), "The file couldn’t be opened because it doesn’t exist.");
  EXPECT_EQ(namelessSentence(512), "The file couldn’t be saved.");
  EXPECT_EQ(namelessSentence(513), "The file couldn’t be saved because you don’t have permission.");
  EXPECT_EQ(namelessSentence(640), "The file couldn’t be saved because there isn’t enough space.");
}

TEST(ErrorSentence, NamesTheVolumeWhereItIsKnown) {
  const NSError::UserInfo info = {{std::string(NSFilePathErrorKey), "/media/card/a.png"},
                                  {std::string(VolumeNameErrorKey), "card"}};
  EXPECT_EQ(NSError(NSCocoaErrorDomain, 640, info).localizedDescription(),
            "You can’t save the file “a.png” because the volume “card” is out of space.");
  EXPECT_EQ(NSError(NSCocoaErrorDomain, 642, info).localizedDescription(),
            "You can’t save the file “a.png” because the volume “card” is read only.");
}

TEST(ErrorSentence, TakesNamesAsTheyAre) {
  EXPECT_EQ(fileError(EACCES, kRead, "/a/{f} %n.png").localizedDescription(),
            "The file “{f} %n.png” couldn’t be opened because you don’t have permission to view it.");
}

TEST(ErrorSentence, GivenOneComesBeforeAllOthers) {
  EXPECT_EQ(NSError(NSCocoaErrorDomain, 513, {{std::string(NSLocalizedDescriptionKey), "Mine."}})
                .localizedDescription(),
            "Mine.");
}

TEST(ErrorSentence, OfAnErrnoIsItsReasonInEnglish) {
  std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(NSError(NSPOSIXErrorDomain, ENOENT).localizedDescription(),
            "The operation couldn’t be completed. No such file or directory");
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(NSError(NSPOSIXErrorDomain, 99999).localizedDescription(),
            "The operation couldn’t be completed. (NSPOSIXErrorDomain error 99999.)");
}

TEST(ErrorSentence, OfAnotherDomainNamesDomainAndCode) {
  EXPECT_EQ(NSError("some.domain", -7).localizedDescription(),
            "The operation couldn’t be completed. (some.domain error -7.)");
}

TEST(NSError, DebugFormShowsTheUserInformationAndTheCause) {
  EXPECT_EQ(
      fileError(EACCES, kWrite, "/b/a.png").debugDescription(),
      "Error Domain=NSCocoaErrorDomain Code=513 \"You don’t have permission to save the file “a.png” in the "
      "folder “b”.\" UserInfo={NSFilePath=/b/a.png, NSUnderlyingError={Error Domain=NSPOSIXErrorDomain "
      "Code=13 "
      "\"The operation couldn’t be completed. Permission denied\"}}");
  EXPECT_EQ(NSError("d", 1).debugDescription(),
            "Error Domain=d Code=1 \"The operation couldn’t be completed. (d error 1.)\"");
}

struct Spoken : LocalizedError {
  std::optional<std::string> errorDescription() const override { return "a.png: too large."; }
};
struct Silent : LocalizedError {
  std::optional<std::string> errorDescription() const override { return std::nullopt; }
};

TEST(FailureDescription, IsTheErrorsOwnWhereItHasOne) {
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(Spoken())), "a.png: too large.");
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(fileError(ENOENT, kRead, "/a/b.png"))),
            "The file “b.png” couldn’t be opened because there is no such file.");
}

TEST(FailureDescription, SaysThatMemoryWasLacking) {
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(std::bad_alloc())),
            "The operation couldn’t be completed. Cannot allocate memory");
}

TEST(FailureDescription, NamesTheTypeOfAnyOtherFailure) {
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(std::runtime_error("secret"))),
            "The operation couldn’t be completed. (std::runtime_error error 1.)");
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(Silent())),
            "The operation couldn’t be completed. (ostra::(anonymous namespace)::Silent error 1.)");
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(5)),
            "The operation couldn’t be completed. (int error 1.)");
  EXPECT_EQ(localizedDescription(nullptr), "The operation couldn’t be completed.");
}

}  // namespace
}  // namespace ostra
