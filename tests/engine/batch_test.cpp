#include <atomic>
#include <new>

#include <gtest/gtest.h>

#include "platform/dispatch/main_loop.h"
#include "tests/doubles/item_provider.h"
#include "tests/engine/engine_fixture.h"

namespace ostra::test {
namespace {

/// Counts how often somebody wants its words.
class CountingError : public LocalizedError {
 public:
  explicit CountingError(std::atomic<int>& asked) : asked_(asked) {}
  std::optional<std::string> errorDescription() const override {
    ++asked_;
    return "counted";
  }

 private:
  std::atomic<int>& asked_;
};

class Batch : public EngineOverDoubles {
 protected:
  std::shared_ptr<ScriptedItemProvider> addProvider(const std::string& path = "") {
    auto provider = std::make_shared<ScriptedItemProvider>(bench_.log);
    if (!path.empty()) provider->url = URL::fileURLWithPath(path);
    providers_.push_back(provider);
    return provider;
  }

  void start(Kind kind) {
    makeEngine(kind)->run(providers_, [this](const auto& outcomes, const auto& failures) {
      ++completions_;
      onMainThread_ = isMainThread();
      outcomes_ = outcomes;
      failures_ = failures;
      MainLoop::stop();
    });
  }
  void run(Kind kind) {
    start(kind);
    MainLoop::run();
    ASSERT_EQ(completions_, 1);
  }

  Strings descriptions() const {
    Strings lines;
    for (const auto& failure : failures_) lines.push_back(localizedDescription(failure));
    return lines;
  }
  Strings convertedNames() const {
    Strings names;
    for (const auto& outcome : outcomes_) names.push_back(outcome.source.lastPathComponent());
    return names;
  }
  Strings accesses() const { return bench_.log.callsBeginningWith({"start access", "stop access"}); }
  std::string typeAskedFor(const Strings& registered) {
    bench_.log.clear();
    providers_.clear();
    completions_ = 0;
    addProvider("/a.png")->types = registered;
    run(Kind::jpeg);
    return bench_.log.callsBeginningWith({"load in place"}).at(0).substr(14);
  }

  std::vector<std::shared_ptr<NSItemProvider>> providers_;
  int completions_ = 0;
  bool onMainThread_ = false;
  OstraQuickActionEngine::Outcomes outcomes_;
  OstraQuickActionEngine::Failures failures_;
};

TEST_F(Batch, OfNothingIsDeliveredOnTheMainQueueLater) {
  start(Kind::invert);
  EXPECT_EQ(completions_, 0);
  MainLoop::run();
  EXPECT_EQ(completions_, 1);
  EXPECT_TRUE(onMainThread_);
  EXPECT_TRUE(outcomes_.empty());
  EXPECT_TRUE(failures_.empty());
}

TEST_F(Batch, AsksForTheFirstKnownImageTypeAndSkipsUnknownIdentifiers) {
  EXPECT_EQ(typeAskedFor({"public.png", "public.file-url"}), "public.png");
  EXPECT_EQ(typeAskedFor({"public.file-url", "public.png", "public.jpeg"}), "public.png");
  EXPECT_EQ(typeAskedFor({"org.nobody.knows", "public.tiff"}), "public.tiff");
  EXPECT_EQ(typeAskedFor({"public.camera-raw-image"}), "public.camera-raw-image");
}

TEST_F(Batch, AsksAProviderWithoutAnImageTypeForAnImageAllTheSame) {
  EXPECT_EQ(typeAskedFor({"com.adobe.pdf"}), "public.image");
  EXPECT_EQ(typeAskedFor({}), "public.image");
  EXPECT_EQ(typeAskedFor({"org.nobody.knows", "public.data"}), "public.image");
}

TEST_F(Batch, RefusesACopyWhereTheFileItselfWouldBeRewritten) {
  addFile("/a.png");
  addProvider("/a.png")->isInPlace = false;
  run(Kind::grayscale);
  EXPECT_EQ(descriptions(),
            Strings{"a.png: the file was provided as a copy and cannot be rewritten in place."});
  EXPECT_EQ(bench_.log.calls(), Strings{"load in place public.png"}) << "no access, no log line";
}

TEST_F(Batch, TakesACopyForAJPEGKind) {
  addFile("/a.png");
  addProvider("/a.png")->isInPlace = false;
  run(Kind::grayscaleJPEG);
  EXPECT_EQ(convertedNames(), Strings{"a.png"});
}

TEST_F(Batch, IgnoresAnErrorBesideAURL) {
  addFile("/a.png");
  addProvider("/a.png")->error = std::make_exception_ptr(cocoaError(4));
  run(Kind::jpeg);
  EXPECT_EQ(convertedNames(), Strings{"a.png"});
  EXPECT_TRUE(failures_.empty());
}

TEST_F(Batch, TakesAFileURLAsTheFileItself) {
  addFile("/a.png");
  const auto provider = addProvider();
  provider->isInPlace = false;
  provider->hasFileURL = true;
  provider->item = URL::fileURLWithPath("/a.png");
  run(Kind::sRGB);
  EXPECT_EQ(convertedNames(), Strings{"a.png"});
  EXPECT_EQ(bench_.log.callsBeginningWith({"load", "has"}),
            (Strings{"load in place public.png", "has public.file-url", "load item public.file-url"}));
}

TEST_F(Batch, TakesAFileURLFromItsBytes) {
  addFile("/a b.png");
  const auto provider = addProvider();
  provider->hasFileURL = true;
  const std::string text = "file:///a%20b.png";
  provider->item = Bytes(text.begin(), text.end());
  run(Kind::sRGB);
  EXPECT_EQ(convertedNames(), Strings{"a b.png"});
}

TEST_F(Batch, DoesNotTakeAURLThatIsNoFile) {
  const auto provider = addProvider();
  provider->hasFileURL = true;
  const std::string text = "https://example.org/a.png";
  provider->item = Bytes(text.begin(), text.end());
  run(Kind::sRGB);
  EXPECT_EQ(descriptions(), Strings{"item: no file was provided."});
  EXPECT_TRUE(accesses().empty());
}

TEST_F(Batch, NamesAProviderWithoutAFileByItsSuggestedName) {
  addProvider();
  addProvider()->name = "Holiday";
  run(Kind::sRGB);
  EXPECT_EQ(descriptions(), (Strings{"item: no file was provided.", "Holiday: no file was provided."}));
}

TEST_F(Batch, ReportsTheProvidersOwnError) {
  addProvider()->error = std::make_exception_ptr(cocoaError(4));
  run(Kind::sRGB);
  EXPECT_EQ(descriptions(), Strings{"item: cocoa words"});
}

TEST_F(Batch, PrefersTheErrorOfTheFileURLToTheEarlierOne) {
  const auto both = addProvider();
  both->hasFileURL = true;
  both->error = std::make_exception_ptr(cocoaError(4));
  both->itemError = std::make_exception_ptr(posixError(2));
  const auto first = addProvider();
  first->hasFileURL = true;
  first->error = std::make_exception_ptr(cocoaError(4));
  const auto neither = addProvider();
  neither->hasFileURL = true;
  run(Kind::sRGB);
  EXPECT_EQ(descriptions(),
            (Strings{"item: posix words", "item: cocoa words", "item: no file was provided."}));
}

TEST_F(Batch, DoesNotLogTheFailuresOfProviders) {
  addProvider()->error = std::make_exception_ptr(cocoaError(4));
  const auto provider = addProvider();
  provider->hasFileURL = true;
  provider->itemError = std::make_exception_ptr(posixError(2));
  run(Kind::sRGB);
  EXPECT_EQ(failures_.size(), 2u);
  EXPECT_TRUE(bench_.sink.lines.empty());
}

TEST_F(Batch, LogsTheFailureOfAConversionAndGoesOn) {
  bench_.graphics.surfaceSteps.refuseAt(1);
  addFile("/a.png");
  addFile("/b.png");
  addProvider("/a.png");
  addProvider("/b.png");
  run(Kind::invert);
  EXPECT_EQ(bench_.sink.lines, (Strings{"error invert: a.png: could not invert the image.",
                                        "info invert: wrote b.png (in place)"}));
  EXPECT_EQ(descriptions(), Strings{"a.png: could not invert the image."});
  EXPECT_EQ(convertedNames(), Strings{"b.png"});
}

TEST_F(Batch, HoldsTheGrantedAccessForTheWholeConversion) {
  addFile("/a.png");
  addProvider("/a.png");
  addProvider("/none.png");
  run(Kind::jpeg);
  const Strings calls = bench_.log.callsBeginningWith({"start", "open", "write", "log", "stop"});
  EXPECT_EQ(calls,
            (Strings{"start access /a.png", "open /a.png uncached", "write /a.jpg",
                     "log info jpg: wrote a.jpg (sibling)", "stop access /a.png", "start access /none.png",
                     "open /none.png uncached", "log error jpg: none.png: not an image ImageIO can read.",
                     "stop access /none.png"}));
}

TEST_F(Batch, HoldsTheAccessOnTheWayThroughAFileURLToo) {
  addFile("/a.png");
  const auto provider = addProvider();
  provider->hasFileURL = true;
  provider->item = URL::fileURLWithPath("/a.png");
  run(Kind::jpeg);
  EXPECT_EQ(accesses(), (Strings{"start access /a.png", "stop access /a.png"}));
}

TEST_F(Batch, GivesBackNoAccessThatWasNotGranted) {
  bench_.access.grants = false;
  addFile("/a.png");
  addProvider("/a.png");
  run(Kind::jpeg);
  EXPECT_EQ(accesses(), Strings{"start access /a.png"});
  EXPECT_EQ(convertedNames(), Strings{"a.png"}) << "a refused grant is no reason not to try";
}

TEST_F(Batch, StartsNoProviderBeforeTheOneBeforeItIsDone) {
  addFile("/a.png");
  addFile("/b.png");
  addProvider("/a.png");
  const auto second = addProvider();
  second->hasFileURL = true;
  second->item = URL::fileURLWithPath("/b.png");
  second->itemDelay = std::chrono::milliseconds(50);
  addProvider("/a.png");
  run(Kind::jpeg);
  EXPECT_EQ(bench_.log.callsBeginningWith({"load", "stop access"}),
            (Strings{"load in place public.png", "stop access /a.png", "load in place public.png",
                     "load item public.file-url", "stop access /b.png", "load in place public.png",
                     "stop access /a.png"}));
}

TEST_F(Batch, KeepsOutcomesAndFailuresInTheOrderOfTheProviders) {
  addFile("/1.png");
  addFile("/3.png");
  for (const char* path : {"/1.png", "/2.png", "/3.png", "/4.png"}) addProvider(path);
  run(Kind::jpeg);
  EXPECT_EQ(convertedNames(), (Strings{"1.png", "3.png"}));
  EXPECT_EQ(descriptions(),
            (Strings{"2.png: not an image ImageIO can read.", "4.png: not an image ImageIO can read."}));
}

TEST_F(Batch, KeepsAForeignExceptionAsItIs) {
  addFile("/a.png");
  bench_.sources.files["/a.png"].failure = std::make_exception_ptr(std::bad_alloc());
  addFile("/b.png");
  addProvider("/a.png");
  addProvider("/b.png");
  run(Kind::jpeg);
  ASSERT_EQ(failures_.size(), 1u);
  EXPECT_THROW(std::rethrow_exception(failures_[0]), std::bad_alloc);
  EXPECT_EQ(convertedNames(), Strings{"b.png"});
  EXPECT_EQ(accesses().size(), 4u);
}

TEST_F(Batch, OutlivesAProviderThatThrowsInsteadOfLoading) {
  addProvider("/a.png")->steps.failAt(1, std::bad_alloc());
  const auto second = addProvider();
  second->hasFileURL = true;
  second->steps.failAt(2, posixError(24));
  addFile("/c.png");
  addProvider("/c.png");
  run(Kind::jpeg);
  ASSERT_EQ(failures_.size(), 2u);
  EXPECT_THROW(std::rethrow_exception(failures_[0]), std::bad_alloc);
  EXPECT_EQ(descriptions()[1], "posix words");
  EXPECT_EQ(convertedNames(), Strings{"c.png"});
}

TEST_F(Batch, DoesNotLoseAFailureToALogThatFails) {
  bench_.sink.failure = std::make_exception_ptr(std::bad_alloc());
  addProvider("/a.png");
  addProvider("/b.png");
  run(Kind::jpeg);
  EXPECT_EQ(descriptions(),
            (Strings{"a.png: not an image ImageIO can read.", "b.png: not an image ImageIO can read."}));
}

TEST_F(Batch, PutsALineTogetherOnlyWhenItsLevelIsOn) {
  std::atomic<int> asked = 0;
  addFile("/a.png");
  bench_.sources.files["/a.png"].failure = std::make_exception_ptr(CountingError(asked));
  addProvider("/a.png");
  bench_.sink.enabled = {LogLevel::info};
  run(Kind::jpeg);
  EXPECT_EQ(asked, 0);
  completions_ = 0;
  bench_.sink.enabled = {LogLevel::error};
  run(Kind::jpeg);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(bench_.sink.lines, Strings{"error jpg: counted"});
}

TEST_F(Batch, KeepsTheEngineAndWithItTheTargetSpaceAlive) {
  auto engine = makeEngine(Kind::convertColorProfile, sRGB());
  const std::weak_ptr<OstraQuickActionEngine> observed = engine;
  bool alive = false;
  bench_.graphics.paint = [&](CGBitmapContext&, const CGImage&) { alive = !observed.expired(); };
  addFile("/a.png");
  addProvider("/a.png");
  engine->run(providers_, [](const auto&, const auto&) { MainLoop::stop(); });
  engine.reset();
  MainLoop::run();
  EXPECT_TRUE(alive);
}

}  // namespace
}  // namespace ostra::test
