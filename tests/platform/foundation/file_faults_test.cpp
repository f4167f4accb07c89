// Every call that changes the disk fails once, fails from then on, or is the last thing that the process
// does; and after each of these the picture must be there, whole and as it was marked.

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <memory>

#include "platform/foundation/data.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_coordinator.h"
#include "platform/foundation/service.h"
#include "tests/platform/foundation/faulty_file_calls.h"
#include "tests/platform/foundation/pictures.h"
#include "tests/support/child.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

using Fault = FaultyFileCalls::Fault;

struct RelatedPresenter : NSFilePresenter {
  explicit RelatedPresenter(const URL& url) : url_(url) {}
  std::optional<URL> presentedItemURL() const override { return url_; }
  std::optional<URL> primaryPresentedItemURL() const override { return url_; }
  std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override { return nullptr; }
  URL url_;
};

/// The write of a related item whose name is the source's own: the hardest case, since it is the only copy.
void writeRelated(const URL& picture) {
  std::exception_ptr failure;
  NSFileCoordinator coordinator(std::make_shared<RelatedPresenter>(picture));
  const auto error = coordinator.coordinateWritingItemAtURL(
      picture, NSFileCoordinatorWritingOptions::forReplacing, [&](const URL& target) {
        try {
          writeToURL(ByteView(reinterpret_cast<const std::uint8_t*>(kNew.data()), kNew.size()), target);
        } catch (const NSError&) {
          failure = std::current_exception();
        }
      });
  if (error) throw NSError(*error);
  if (failure) std::rethrow_exception(failure);
}

struct Road {
  const char* name;
  void (*run)(const URL&);
  bool exchange;  // whether the disk knows it
};

void rewriteInPlace(const URL& picture) { rewrite(picture); }

class EveryCall : public PicturesTest, public ::testing::WithParamInterface<Road> {
 protected:
  URL makeMarkedPicture() const {
    const URL original = makePicture("a.png");
    fs::permissions(picture("a.png"), fs::perms(0640));
    if (attributes()) setUserAttribute(picture("a.png"), "user.tag", "red");
    return versioned(original);
  }

  bool attributes() const { return keepsUserAttributes(picture("a.png")); }

  void expectMarked(int number) const {
    EXPECT_EQ(modeOf(picture("a.png")), 0640U) << number;
    if (attributes()) {
      EXPECT_EQ(userAttribute(picture("a.png"), "user.tag"), "red") << number;
    }
  }

  /// What the disk of this road answers anyway, before the fault.
  static Fault on(const Fault& fault) {
    return [=](int number, const std::string& name) {
      if (!GetParam().exchange && name == "exchange") return EINVAL;
      return fault ? fault(number, name) : 0;
    };
  }

  /// Whether there was a call of that number.
  template <class Check>
  bool runWith(const Fault& fault, int number, Check check) {
    const URL original = makeMarkedPicture();
    FaultyFileCalls calls(on(fault));
    const Service<FileCalls>::Override override(calls);
    const bool failed = codeOf([&] { GetParam().run(original); }) != 0;
    check(failed, textOf(picture("a.png")));
    expectMarked(number);
    fs::remove_all(folder_.path("pictures"));
    fs::remove_all(folder_.path("cache"));
    fs::create_directory(folder_.path("pictures"));
    fs::create_directory(folder_.path("cache"));
    return calls.count() >= number;
  }
};

TEST_P(EveryCall, ThatFailsOnceLeavesTheOldPictureOrTellsOfSuccess) {
  const int before = openDescriptors();
  for (const int error : {EIO, ENOSPC, EPERM}) {
    for (int number = 1;; ++number) {
      const bool made =
          runWith(FaultyFileCalls::failing(number, error), number, [&](bool failed, const std::string& text) {
            EXPECT_EQ(text, failed ? kOld : kNew) << "call " << number << " error " << error;
          });
      if (!made) break;
      ASSERT_LT(number, 100);
    }
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST_P(EveryCall, ThatFailsForGoodNeverLeavesAPartOrTellsOfSuccessWithoutIt) {
  for (const int error : {EIO, ENOSPC, EPERM}) {
    for (int number = 1;; ++number) {
      const bool made = runWith(
          FaultyFileCalls::failingFrom(number, error), number, [&](bool failed, const std::string& text) {
            EXPECT_TRUE(text == kOld || text == kNew) << "call " << number << ": " << text;
            EXPECT_TRUE(failed || text == kNew) << "call " << number;
          });
      if (!made) break;
      ASSERT_LT(number, 100);
    }
  }
}

TEST_P(EveryCall, ThatIsTheLastOfItsProcessLeavesTheOldOrTheNewPicture) {
  for (int number = 1;; ++number) {
    bool ended = false;
    for (const bool before : {true, false}) {
      const URL original = makeMarkedPicture();
      const int status = runInChild([&] {
        FaultyFileCalls calls(on(nullptr));
        before ? calls.killBefore(number) : calls.killAfter(number);
        const Service<FileCalls>::Override override(calls);
        GetParam().run(original);
      });
      ended = status != 128 + SIGKILL;
      if (ended) {
        ASSERT_EQ(status, 0);
      }
      const std::string text = textOf(picture("a.png"));
      EXPECT_TRUE(text == kOld || text == kNew) << "call " << number << ": " << text;
      expectMarked(number);
      fs::remove(picture("a.png"));
    }
    if (ended) break;
    ASSERT_LT(number, 100);
  }
}

INSTANTIATE_TEST_SUITE_P(On, EveryCall,
                         ::testing::Values(Road{"Exchange", rewriteInPlace, true},
                                           Road{"Rename", rewriteInPlace, false},
                                           Road{"RelatedExchange", writeRelated, true},
                                           Road{"RelatedRename", writeRelated, false}),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace ostra::test
