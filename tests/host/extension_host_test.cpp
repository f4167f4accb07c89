#include "host/extension_host.h"

#include <chrono>
#include <csignal>
#include <functional>
#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/stop_signals.h"
#include "host/usage_error.h"
#include "platform/appkit/renderer.h"
#include "platform/dispatch/queue.h"
#include "platform/dispatch/semaphore.h"
#include "platform/extension/extension_item.h"
#include "platform/foundation/service.h"
#include "tests/doubles/renderer.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Loads every file in turn on a background thread, as a real handler does, and then ends the request on the
/// main queue.
class RecordingHandler : public NSExtensionRequestHandling {
 public:
  void beginRequestWithExtensionContext(std::shared_ptr<NSExtensionContext> context) override {
    begun_ = isMainThread();
    globalQueue(QualityOfService::userInitiated).async([this, context] {
      for (const auto& provider : providersOf(*context)) load(*provider);
      mainQueue().async([this, context] { finish(*context); });
    });
  }

  bool begunOnMainThread() const { return begun_; }

  std::vector<std::string> loaded;
  std::vector<std::string> failed;
  std::function<void(const std::string& path)> whileInWork;
  std::size_t items = 0;

 private:
  std::vector<std::shared_ptr<NSItemProvider>> providersOf(const NSExtensionContext& context) {
    items = context.inputItems().size();
    std::vector<std::shared_ptr<NSItemProvider>> providers;
    for (const auto& item : context.inputItems()) {
      const auto& attachments = dynamic_cast<const NSExtensionItem&>(*item).attachments();
      providers.insert(providers.end(), attachments.begin(), attachments.end());
    }
    return providers;
  }

  void load(NSItemProvider& provider) {
    const auto done = std::make_shared<DispatchSemaphore>(0);
    provider.loadInPlaceFileRepresentationForTypeIdentifier(
        "public.image", [this, done](const std::optional<URL>& url, bool, const std::exception_ptr& error) {
          if (url && whileInWork) whileInWork(url->lastPathComponent());
          if (url) loaded.push_back(url->lastPathComponent());
          if (error) failed.push_back(localizedDescription(error));
          done->signal();
        });
    done->wait();
  }

  void finish(NSExtensionContext& context) {
    if (failed.empty()) return context.completeRequestReturningItems({}, nullptr);
    NSAlert alert;
    alert.messageText = "Could not convert every image";
    alert.runModal();
    context.cancelRequestWithError(NSError("org.example", 1));
  }

  bool begun_ = false;
};

class ExtensionHostTest : public testing::Test {
 protected:
  ExtensionHostTest() {
    for (const char* name : {"a.png", "b.png", "c.png"}) {
      test::writeFile(folder_.path(name), "bytes");
      files_.push_back(folder_.path(name));
    }
  }

  std::optional<RequestEnd> serve() { return serveRequest(*handler_, files_, nullptr); }

  test::TemporaryFolder folder_;
  std::vector<std::string> files_;
  // A request that a signal left open keeps its threads for ever, and they keep the handler.
  std::shared_ptr<RecordingHandler> handler_ = std::make_shared<RecordingHandler>();
};

TEST_F(ExtensionHostTest, HandsTheFilesOverAsOneSelectionInTheirOrder) {
  const auto end = serve();
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->error);
  EXPECT_TRUE(handler_->begunOnMainThread());
  EXPECT_EQ(handler_->items, 1u);
  EXPECT_THAT(handler_->loaded, ElementsAre("a.png", "b.png", "c.png"));
}

TEST_F(ExtensionHostTest, LeavesItToTheHandlerToMissTheFiles) {
  files_.clear();
  EXPECT_TRUE(serve());
  EXPECT_EQ(handler_->items, 1u);
  EXPECT_THAT(handler_->loaded, testing::IsEmpty());
}

TEST_F(ExtensionHostTest, GivesBackTheErrorOfACancelledRequest) {
  files_.insert(files_.begin() + 1, folder_.path("missing.png"));
  testing::internal::CaptureStderr();
  const auto end = serve();
  testing::internal::GetCapturedStderr();
  ASSERT_TRUE(end && end->error);
  EXPECT_EQ(end->error->domain(), "org.example");
  EXPECT_THAT(handler_->loaded, ElementsAre("a.png", "b.png", "c.png"));
}

TEST_F(ExtensionHostTest, EndsThePictureInWorkAfterASignalAndTouchesNoFurtherOne) {
  const StopSignals signals;
  static const auto* const keptForever = new std::shared_ptr<RecordingHandler>(handler_);
  ASSERT_NE(*keptForever, nullptr);
  handler_->whileInWork = [](const std::string& name) {
    if (name != "b.png") return;
    kill(getpid(), SIGTERM);
    while (!StopSignals::received()) std::this_thread::yield();
  };
  EXPECT_FALSE(serve());
  EXPECT_EQ(StopSignals::received(), SIGTERM);
  EXPECT_THAT(handler_->loaded, ElementsAre("a.png", "b.png"));
}

TEST_F(ExtensionHostTest, OpensThePanelOfARequestThatHasBegun) {
  bool begunBefore = false;
  serveRequest(*handler_, files_, nullptr, [&] { begunBefore = handler_->begunOnMainThread(); });
  EXPECT_TRUE(begunBefore);
}

/// A principal object that waits for its user.
struct Waiting : NSExtensionRequestHandling {
  void beginRequestWithExtensionContext(std::shared_ptr<NSExtensionContext> begun) override {
    context = begun;
  }
  std::shared_ptr<NSExtensionContext> context;
};

// Nothing is in work then that would look whether to stop.
TEST_F(ExtensionHostTest, EndsAtOnceWhenASignalComesWhileAPanelIsOpen) {
  test::CallLog log;
  test::RecordingRenderer renderer(log);
  const Service<Renderer>::Override override(renderer);
  const StopSignals signals;
  Waiting panel;
  std::thread somebody;
  const auto end = serveRequest(panel, files_, nullptr, [&somebody] {
    somebody = std::thread([] {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      kill(getpid(), SIGTERM);
    });
  });
  somebody.join();
  EXPECT_FALSE(end);
  EXPECT_THAT(log.calls(), ElementsAre("withdraw"));
}

TEST_F(ExtensionHostTest, EndsAtOnceWhenASignalCameBeforeThePanelOpened) {
  const StopSignals signals;
  std::raise(SIGHUP);
  Waiting panel;
  EXPECT_FALSE(serveRequest(panel, files_, nullptr, [] {}));
}

TEST_F(ExtensionHostTest, HandsOnWhatOpeningThePanelThrows) {
  Waiting panel;
  EXPECT_THROW(serveRequest(panel, files_, nullptr, [] { throw UsageError("nobody"); }), UsageError);
}

TEST_F(ExtensionHostTest, TellsWhichFileIsInWork) {
  std::vector<std::string> told;
  serveRequest(*handler_, files_, [&told](std::size_t index, const std::string& name) {
    told.push_back(std::to_string(index) + " " + name);
  });
  EXPECT_THAT(told, ElementsAre("0 a.png", "1 b.png", "2 c.png"));
}

TEST(PrincipalObject, IsMadeByTheNameInTheBundle) {
  const PrincipalClass classes[] = {{"Other", nullptr},
                                    {"Recording", []() -> std::shared_ptr<NSExtensionRequestHandling> {
                                       return std::make_shared<RecordingHandler>();
                                     }}};
  EXPECT_NE(dynamic_cast<RecordingHandler*>(makePrincipalObject("Recording", classes).get()), nullptr);
  EXPECT_NE(makePrincipalObject("OstraQuickActionRequestHandler"), nullptr);
  const auto panel = makePrincipalObject("OstraQuickActionProfileViewController");
  EXPECT_NE(std::dynamic_pointer_cast<NSViewController>(panel), nullptr);
}

std::string refusal(const std::string& className) {
  try {
    makePrincipalObject(className);
    return "made";
  } catch (const UsageError& failure) {
    return failure.what();
  }
}

TEST(PrincipalObject, IsAUsageErrorWhereTheClassIsUnknown) {
  EXPECT_THAT(refusal("Nonsense"), HasSubstr("“Nonsense”"));
  EXPECT_THAT(refusal(""), HasSubstr("no principal class"));
}

}  // namespace
}  // namespace ostra
