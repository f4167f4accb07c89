#include "platform/foundation/file_coordinator.h"

#include <cerrno>
#include <filesystem>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/data.h"
#include "platform/foundation/service.h"
#include "tests/platform/foundation/faulty_file_calls.h"
#include "tests/platform/foundation/pictures.h"
#include "tests/support/child.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

struct Presenter : NSFilePresenter {
  Presenter(std::optional<URL> primary, const URL& related)
      : primary_(std::move(primary)), related_(related) {}
  std::optional<URL> presentedItemURL() const override { return related_; }
  std::optional<URL> primaryPresentedItemURL() const override { return primary_; }
  std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override { return nullptr; }
  std::optional<URL> primary_;
  URL related_;
};

/// How a coordinated write went: the coordination error's code or 0, and what the accessor was given.
struct Written {
  std::int64_t code = 0;
  std::int64_t errnoValue = 0;
  std::string sentence;
  std::optional<std::string> given;
};

Written coordinate(std::shared_ptr<NSFilePresenter> presenter, const URL& url,
                   const NSFileCoordinator::Accessor& accessor) {
  Written run;
  NSFileCoordinator coordinator(std::move(presenter));
  const auto error = coordinator.coordinateWritingItemAtURL(
      url, NSFileCoordinatorWritingOptions::forReplacing, [&](const URL& target) {
        EXPECT_FALSE(run.given) << "the accessor ran twice";
        run.given = target.path();
        accessor(target);
      });
  if (error) run.code = error->code();
  if (error) run.sentence = error->localizedDescription();
  if (error && error->underlyingError() != nullptr) run.errnoValue = error->underlyingError()->code();
  return run;
}

void writeNew(const URL& target) {
  writeToURL(ByteView(reinterpret_cast<const std::uint8_t*>(kNew.data()), kNew.size()), target);
}
void writeNothing(const URL&) {}

class Coordination : public PicturesTest {
 protected:
  Written sibling(std::string_view source, std::string_view destination,
                  const NSFileCoordinator::Accessor& accessor = writeNew) const {
    return siblingOf(url(source), destination, accessor);
  }
  Written siblingOf(const URL& source, std::string_view destination,
                    const NSFileCoordinator::Accessor& accessor = writeNew) const {
    return coordinate(std::make_shared<Presenter>(source, url(destination)), url(destination), accessor);
  }
};

TEST_F(Coordination, WithoutAPrimaryItemGivesTheURLItself) {
  const URL original = makePicture("a.png");
  EXPECT_EQ(coordinate(nullptr, original, writeNothing).given, picture("a.png"));
  EXPECT_EQ(coordinate(std::make_shared<Presenter>(std::nullopt, original), original, writeNothing).given,
            picture("a.png"));
}

TEST_F(Coordination, WithoutAPrimaryItemGivesTheVersionToo) {
  const URL original = makePicture("a.png");
  std::optional<FileVersion> given;
  coordinate(nullptr, original, [&](const URL& target) { given = target.fileVersion(); });
  EXPECT_EQ(given, original.fileVersion());
}

TEST_F(Coordination, OfANewSiblingGivesItsURLAndCreatesNothing) {
  makePicture("a.webp");
  const Written run = sibling("a.webp", "a.png", writeNothing);
  EXPECT_EQ(run.given, picture("a.png"));
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(pictureNames(), "a.webp");
  EXPECT_EQ(cacheNames(), "");
}

TEST_F(Coordination, OfASiblingThatIsALinkToNowhereWritesThroughIt) {
  makePicture("a.webp");
  fs::create_symlink("target.png", picture("a.png"));
  EXPECT_EQ(sibling("a.webp", "a.png").given, picture("a.png"));
  EXPECT_TRUE(fs::is_symlink(picture("a.png")));
  EXPECT_EQ(textOf(picture("target.png")), kNew);
}

TEST_F(Coordination, OfAnExistingSiblingWritesElsewhereAndReplacesIt) {
  makePicture("a.webp");
  makePicture("a.png");
  fs::permissions(picture("a.png"), fs::perms(0640));
  const int before = openDescriptors();
  const Written run = sibling("a.webp", "a.png", [&](const URL& target) {
    EXPECT_EQ(target.lastPathComponent(), "a.png");
    EXPECT_FALSE(fs::exists(target.path()));
    writeNew(target);
    EXPECT_EQ(textOf(picture("a.png")), kOld);
  });
  EXPECT_EQ(run.code, 0) << run.sentence;
  EXPECT_NE(run.given, picture("a.png"));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(modeOf(picture("a.png")), 0640U);
  EXPECT_EQ(pictureNames(), "a.png a.webp");
  EXPECT_EQ(cacheNames(), "");
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Coordination, KeepsTheAttributesOfAnExistingSibling) {
  makePicture("a.webp");
  makePicture("a.png");
  if (!keepsUserAttributes(picture("a.png"))) GTEST_SKIP() << "no user attributes on this file system";
  setUserAttribute(picture("a.png"), "user.tag", "red");
  EXPECT_EQ(sibling("a.webp", "a.png").code, 0);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(userAttribute(picture("a.png"), "user.tag"), "red");
}

TEST_F(Coordination, KeepsAnExistingSiblingWhenNothingWasWritten) {
  makePicture("a.webp");
  const URL existing = makePicture("a.png");
  EXPECT_EQ(sibling("a.webp", "a.png", writeNothing).code, 0);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
  EXPECT_EQ(versioned(existing).fileVersion(), existing.fileVersion());
  EXPECT_EQ(cacheNames(), "");
}

TEST_F(Coordination, OfALinkReplacesTheFileBehindIt) {
  makePicture("a.webp");
  makePicture("file.png");
  fs::create_symlink("file.png", picture("a.png"));
  EXPECT_EQ(sibling("a.webp", "a.png").code, 0);
  EXPECT_TRUE(fs::is_symlink(picture("a.png")));
  EXPECT_EQ(textOf(picture("file.png")), kNew);
}

TEST_F(Coordination, OfTheSourceUnderAnyGuiseReplacesItAsAWhole) {
  const URL source = makePicture("x.jpg");
  EXPECT_NE(siblingOf(source, "x.jpg").given, picture("x.jpg"));
  EXPECT_EQ(textOf(picture("x.jpg")), kNew);

  makePicture("y.png");
  fs::create_hard_link(picture("y.png"), picture("y.jpg"));
  EXPECT_NE(siblingOf(versioned(url("y.png")), "y.jpg").given, picture("y.jpg"));
  EXPECT_EQ(textOf(picture("y.jpg")), kNew);
  EXPECT_EQ(textOf(picture("y.png")), kOld);

  makePicture("z.png");
  fs::create_symlink("z.png", picture("z.jpg"));
  EXPECT_NE(siblingOf(versioned(url("z.png")), "z.jpg").given, picture("z.jpg"));
  EXPECT_EQ(textOf(picture("z.png")), kNew);
}

TEST_F(Coordination, OfTheSourceThatWasChangedIsRefused) {
  const URL source = makePicture("x.jpg");
  writeFile(picture("x.jpg"), "theirs");
  const Written run = siblingOf(source, "x.jpg");
  EXPECT_EQ(run.sentence, "The file “x.jpg” couldn’t be saved because it was changed by another program.");
  EXPECT_FALSE(run.given);
  EXPECT_EQ(textOf(picture("x.jpg")), "theirs");
}

TEST_F(Coordination, OfTheSourceThatWasRemovedIsRefused) {
  const URL source = makePicture("a.jpg");
  fs::remove(picture("a.jpg"));
  const Written run = coordinate(std::make_shared<Presenter>(source, source), source, writeNew);
  EXPECT_EQ(run.code, NSFileWriteUnknownError);
  EXPECT_FALSE(run.given);
  EXPECT_EQ(pictureNames(), "");
}

TEST_F(Coordination, OfASiblingThatChangesMeanwhileKeepsTheChange) {
  makePicture("a.webp");
  makePicture("a.png");
  const Written run = sibling("a.webp", "a.png", [&](const URL& target) {
    writeNew(target);
    writeFile(picture("a.png"), "theirs");
  });
  EXPECT_EQ(run.code, NSFileWriteUnknownError);
  EXPECT_EQ(textOf(picture("a.png")), "theirs");
  EXPECT_EQ(cacheNames(), "");
}

TEST_F(Coordination, LeavesTheOldFileWhereItIsWhenItCannotBePutBack) {
  makePicture("a.webp");
  makePicture("a.png");
  bool exchanged = false;
  FaultyFileCalls calls([&](int, const std::string& name) {
    const bool fails = exchanged && name != "remove";
    exchanged = exchanged || name == "exchange";
    return fails ? EIO : 0;
  });
  {
    const Service<FileCalls>::Override override(calls);
    EXPECT_EQ(sibling("a.webp", "a.png").code, NSFileWriteUnknownError);
  }
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(textOf(folder_.path("cache/ostra/" + cacheNames() + "/a.png")), kOld);
}

TEST_F(Coordination, RefusesWhatIsNoFile) {
  makePicture("a.webp");
  fs::create_directory(picture("folder.png"));
  ASSERT_EQ(mkfifo(picture("pipe.png").c_str(), 0666), 0);
  for (const char* name : {"folder.png", "pipe.png"}) {
    const Written run = sibling("a.webp", name);
    EXPECT_EQ(run.code, NSFileWriteUnknownError) << name;
    EXPECT_EQ(run.errnoValue, name == std::string("folder.png") ? EISDIR : EINVAL) << name;
    EXPECT_FALSE(run.given) << name;
  }
  fs::create_symlink("loop.png", picture("loop.png"));
  EXPECT_EQ(sibling("a.webp", "loop.png").code, NSFileWriteUnknownError);
}

TEST_F(Coordination, OfASiblingThatMayNotBeWrittenAnswersLikeAPlainWrite) {
  makePicture("a.webp");
  makePicture("a.png");
  fs::permissions(picture("a.png"), fs::perms(0444));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              const Written run = sibling("a.webp", "a.png");
              EXPECT_EQ(run.code, NSFileWriteNoPermissionError);
              EXPECT_EQ(run.sentence,
                        "You don’t have permission to save the file “a.png” in the folder “pictures”.");
              EXPECT_FALSE(run.given);
            }),
            0);
  EXPECT_EQ(textOf(picture("a.png")), kOld);
}

TEST_F(Coordination, OnAReadOnlyDiskAnswersLikeAPlainWrite) {
  const int status = runInChild([&] {
    if (!mountSmallDisk(folder_.path("pictures"), "size=64k,mode=777")) _exit(77);
    makePicture("a.webp");
    makePicture("a.png");
    if (mount(nullptr, folder_.path("pictures").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
      _exit(77);
    EXPECT_EQ(sibling("a.webp", "a.png").code, NSFileWriteVolumeReadOnlyError);
  });
  if (status == 77) GTEST_SKIP() << "no disk can be mounted here";
  EXPECT_EQ(status, 0);
}

TEST_F(Coordination, WhereNothingCanBeStagedWritesPlainly) {
  makePicture("a.webp");
  makePicture("a.png");
  fs::permissions(folder_.path("pictures"), fs::perms(0555));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { EXPECT_EQ(sibling("a.webp", "a.png").given, picture("a.png")); }),
            0);
  fs::permissions(folder_.path("pictures"), fs::perms(0755));
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(cacheNames(), "");
}

TEST_F(Coordination, WhereTheOwnerCannotBeKeptWritesPlainly) {
  OSTRA_NEEDS_ROOT("give files away");
  makePicture("a.webp");
  makePicture("a.png");
  ASSERT_EQ(chown(picture("a.png").c_str(), 12345, 65534), 0);
  fs::permissions(picture("a.png"), fs::perms(0664));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] { EXPECT_EQ(sibling("a.webp", "a.png").given, picture("a.png")); }),
            0);
  EXPECT_EQ(textOf(picture("a.png")), kNew);
  EXPECT_EQ(cacheNames(), "");
}

TEST_F(Coordination, NeverWritesPlainlyIntoTheSource) {
  const URL source = makePicture("x.jpg");
  fs::permissions(folder_.path("pictures"), fs::perms(0555));
  EXPECT_EQ(runInChildAsOrdinaryUser([&] {
              const Written run = siblingOf(source, "x.jpg");
              EXPECT_EQ(run.code, NSFileWriteNoPermissionError);
              EXPECT_FALSE(run.given);
            }),
            0);
  fs::permissions(folder_.path("pictures"), fs::perms(0755));
  EXPECT_EQ(textOf(picture("x.jpg")), kOld);
}

TEST_F(Coordination, GoesThroughTheService) {
  struct Refusing : FileCoordination {
    std::optional<NSError> coordinateWriting(const NSFilePresenter*, const URL&,
                                             NSFileCoordinatorWritingOptions,
                                             const NSFileCoordinator::Accessor&) override {
      return NSError(NSCocoaErrorDomain, 255);
    }
  } refusing;
  const Service<FileCoordination>::Override override(refusing);
  EXPECT_EQ(sibling("a.webp", "a.png").code, 255);
}

}  // namespace
}  // namespace ostra::test
