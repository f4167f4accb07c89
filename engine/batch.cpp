#include "engine/engine.h"
#include "engine/log.h"
#include "front/error.h"
#include "platform/dispatch/queue.h"
#include "platform/dispatch/semaphore.h"
#include "platform/types/ut_type.h"

namespace ostra {
namespace {

using Engine = OstraQuickActionEngine;

constexpr std::string_view fileURLType = "public.file-url";

/// What one batch works on and what came of it. The lists are appended to by one callback at a time; the
/// signal that ends each provider orders the appends before whatever the batch does next.
struct Batch {
  std::shared_ptr<const Engine> engine;
  Engine::Providers providers;
  Engine::Completion completion;
  Engine::Outcomes outcomes;
  Engine::Failures failures;
};

/// One provider's turn. The callbacks share it, because the batch may go on before the last of them has
/// returned.
struct Turn {
  std::shared_ptr<Batch> batch;
  std::shared_ptr<NSItemProvider> provider;
  DispatchSemaphore done{0};
  std::exception_ptr inPlaceError{};
};

void fail(const Turn& turn, std::exception_ptr failure) {
  turn.batch->failures.push_back(std::move(failure));
}

/// The failure of a provider that gave no file: the first of the two errors that there is.
void failWithoutFile(const Turn& turn, const std::exception_ptr& error,
                     const std::exception_ptr& earlierError) {
  const std::exception_ptr& known = error ? error : earlierError;
  fail(turn, std::make_exception_ptr(
                 OstraQuickActionError(turn.provider->suggestedName().value_or("item"),
                                       known ? localizedDescription(known) : "no file was provided.")));
}

/// Ends a turn once, unless another callback was made responsible for that.
class SignalAtEnd {
 public:
  explicit SignalAtEnd(Turn& turn) : turn_(&turn) {}
  ~SignalAtEnd() {
    if (turn_ != nullptr) turn_->done.signal();
  }
  SignalAtEnd(const SignalAtEnd&) = delete;
  SignalAtEnd& operator=(const SignalAtEnd&) = delete;
  void leaveToAnother() { turn_ = nullptr; }

 private:
  Turn* turn_;
};

class AccessScope {
 public:
  explicit AccessScope(const URL& url) : url_(url), granted_(url.startAccessingSecurityScopedResource()) {}
  ~AccessScope() {
    if (granted_) url_.stopAccessingSecurityScopedResource();
  }
  AccessScope(const AccessScope&) = delete;
  AccessScope& operator=(const AccessScope&) = delete;

 private:
  const URL& url_;
  bool granted_;
};

void logAndFail(const Turn& turn, const std::exception_ptr& failure) {
  try {
    logFailure(turn.batch->engine->kind(), failure);
  } catch (...) {  // a line that cannot be written must not cost the failure itself
  }
  fail(turn, failure);
}

void fileStep(const Turn& turn, const URL& url, bool isInPlace) {
  const Engine& engine = *turn.batch->engine;
  if (!isInPlace && !isJPEGKind(engine.kind())) {
    return fail(turn, std::make_exception_ptr(OstraQuickActionError(
                          url.lastPathComponent(),
                          "the file was provided as a copy and cannot be rewritten in place.")));
  }
  const AccessScope access(url);
  try {
    turn.batch->outcomes.push_back(engine.convertFile(url));
  } catch (...) {
    logAndFail(turn, std::current_exception());
  }
}

std::optional<URL> urlOfItem(const NSItemProvider::Item& item) {
  if (const auto* url = std::get_if<URL>(&item)) return *url;
  if (const auto* bytes = std::get_if<Bytes>(&item)) return URL::withDataRepresentation(*bytes);
  return std::nullopt;
}

void fileURLStep(Turn& turn, const NSItemProvider::Item& item, const std::exception_ptr& error) {
  const SignalAtEnd signal(turn);
  try {
    const std::optional<URL> url = urlOfItem(item);
    if (url && url->isFileURL()) return fileStep(turn, *url, true);
    failWithoutFile(turn, error, turn.inPlaceError);
  } catch (...) {
    fail(turn, std::current_exception());
  }
}

/// An error that comes with a URL is ignored.
void inPlaceStep(const std::shared_ptr<Turn>& turn, const std::optional<URL>& url, bool isInPlace,
                 const std::exception_ptr& error) {
  SignalAtEnd signal(*turn);
  try {
    if (url) return fileStep(*turn, *url, isInPlace);
    if (!turn->provider->hasItemConformingToTypeIdentifier(fileURLType))
      return failWithoutFile(*turn, error, nullptr);
    turn->inPlaceError = error;
    turn->provider->loadItemForTypeIdentifier(
        fileURLType, [turn](const NSItemProvider::Item& item, const std::exception_ptr& itemError) {
          fileURLStep(*turn, item, itemError);
        });
    signal.leaveToAnother();
  } catch (...) {
    fail(*turn, std::current_exception());
  }
}

/// The first registered identifier of a known image type; a provider without one is still asked for an image.
std::string typeToLoad(const NSItemProvider& provider) {
  for (std::string& identifier : provider.registeredTypeIdentifiers()) {
    const std::optional<UTType> type = UTType::withIdentifier(identifier);
    if (type && type->conformsTo(UTType::image())) return std::move(identifier);
  }
  return UTType::image().identifier();
}

/// Asks one provider for its file, which is converted inside the provider's callback: the URL is valid only
/// there.
void takeTurn(const std::shared_ptr<Batch>& batch, const std::shared_ptr<NSItemProvider>& provider) {
  std::shared_ptr<Turn> turn;
  try {
    turn = std::make_shared<Turn>();
  } catch (...) {
    batch->failures.push_back(std::current_exception());
    return;
  }
  turn->batch = batch;
  turn->provider = provider;
  try {
    turn->provider->loadInPlaceFileRepresentationForTypeIdentifier(
        typeToLoad(*turn->provider),
        [turn](const std::optional<URL>& url, bool isInPlace, const std::exception_ptr& error) {
          inPlaceStep(turn, url, isInPlace, error);
        });
  } catch (...) {  // nothing was loaded, so nobody else will end this turn
    fail(*turn, std::current_exception());
    turn->done.signal();
  }
  turn->done.wait();
  // A callback that is still on its way back may hold the turn, but nothing of the batch any more.
  turn->batch.reset();
  turn->inPlaceError = nullptr;
}

/// Hands the batch over to the main queue with its completion, so that all that it holds ends there.
void runBody(std::shared_ptr<Batch> batch, std::function<void()> complete) {
  for (const std::shared_ptr<NSItemProvider>& provider : batch->providers) takeTurn(batch, provider);
  batch.reset();
  mainQueue().async(std::move(complete));
}

}  // namespace

void OstraQuickActionEngine::run(Providers providers, Completion completion) const {
  auto batch =
      std::make_shared<Batch>(Batch{shared_from_this(), std::move(providers), std::move(completion), {}, {}});
  // A failure must find its place even when the memory has run out.
  batch->outcomes.reserve(batch->providers.size());
  batch->failures.reserve(batch->providers.size());
  std::function<void()> complete = [batch] { batch->completion(batch->outcomes, batch->failures); };
  globalQueue(QualityOfService::userInitiated)
      .async([batch = std::move(batch), complete = std::move(complete)]() mutable {
        runBody(std::move(batch), std::move(complete));
      });
}

}  // namespace ostra
