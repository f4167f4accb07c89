#include "front/error.h"

#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "front/batch_report.h"
#include "platform/dispatch/main_loop.h"
#include "platform/foundation/service.h"
#include "tests/doubles/application.h"
#include "tests/doubles/extension_context.h"
#include "tests/doubles/renderer.h"

namespace ostra::test {
namespace {

std::exception_ptr fileFailure(const char* name, const char* reason) {
  return std::make_exception_ptr(OstraQuickActionError(name, reason));
}

std::string description(const NSError& error) {
  return std::get<std::string>(error.userInfo().at(std::string(NSLocalizedDescriptionKey)));
}

class SpeechlessError : public LocalizedError {
 public:
  std::optional<std::string> errorDescription() const override { return std::nullopt; }
};

TEST(FileError, DescribesItselfAsNameColonReason) {
  const OstraQuickActionError error("a.png", "could not invert the image.");
  EXPECT_EQ(error.fileName(), "a.png");
  EXPECT_EQ(error.reason(), "could not invert the image.");
  EXPECT_EQ(error.errorDescription(), "a.png: could not invert the image.");
  EXPECT_STREQ(error.what(), "a.png: could not invert the image.");
}

TEST(RequestError, HasTheExtensionsConstantDomain) {
  EXPECT_EQ(kBundleIdentifier, "org.ostra.QuickActions");
  for (const NSError& error : {noConversionError(), noImageError(), batchError({})}) {
    EXPECT_EQ(error.domain(), "org.ostra.QuickActions");
  }
}

TEST(RequestError, HoldsItsDescriptionAndNothingElse) {
  for (const NSError& error : {noConversionError(), noImageError(), batchError({fileFailure("a", "b.")})}) {
    EXPECT_EQ(error.userInfo().size(), 1u);
    EXPECT_EQ(error.userInfo().count(NSLocalizedDescriptionKey), 1u);
  }
}

TEST(RequestError, SaysWhatIsMissing) {
  EXPECT_EQ(noConversionError().code(), 2);
  EXPECT_EQ(description(noConversionError()),
            "This Quick Action bundle does not say which conversion it is (NIVEQuickAction).");
  EXPECT_EQ(noImageError().code(), 3);
  EXPECT_EQ(description(noImageError()), "No image was selected.");
}

TEST(BatchError, OfOneFailureIsItsLineAlone) {
  const NSError error = batchError({fileFailure("a.png", "could not invert the image.")});
  EXPECT_EQ(error.code(), 1);
  EXPECT_EQ(description(error), "a.png: could not invert the image.");
}

TEST(BatchError, ListsEveryFailureInTheOrderOfCollection) {
  EXPECT_EQ(description(batchError({fileFailure("b", "2."), fileFailure("a", "1."), fileFailure("b", "2.")})),
            "b: 2.\na: 1.\nb: 2.");
  const std::vector<std::exception_ptr> many(500, fileFailure("n", "r."));
  const std::string lines = description(batchError(many));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 499);
}

TEST(BatchError, GivesAForeignErrorItsOwnDescription) {
  const NSError platformError("Some", 9,
                              {{std::string(NSLocalizedDescriptionKey), std::string("The disk is gone.")}});
  const auto line = [](const std::exception_ptr& failure) { return description(batchError({failure})); };
  EXPECT_EQ(line(std::make_exception_ptr(platformError)), "The disk is gone.");
  const auto bare = std::make_exception_ptr(NSError("Some", 9));
  EXPECT_EQ(line(bare), NSError("Some", 9).localizedDescription());
  const auto foreign = std::make_exception_ptr(std::runtime_error("internal words"));
  EXPECT_EQ(line(foreign), localizedDescription(foreign));
  EXPECT_FALSE(line(foreign).empty());
}

TEST(BatchError, GivesAnErrorWithoutDescriptionTheGenericOne) {
  const auto failure = std::make_exception_ptr(SpeechlessError());
  EXPECT_EQ(description(batchError({failure})), localizedDescription(failure));
  EXPECT_FALSE(localizedDescription(failure).empty());
}

class FailureAlert : public testing::Test {
 protected:
  CallLog log_;
  RecordingRenderer renderer_{log_};

 private:
  Service<Renderer>::Override useRenderer_{renderer_};
};

TEST_F(FailureAlert, IsAWarningWithOneButton) {
  showFailureAlert("Invert Color could not convert every image", "a.png: b.\nc.png: d.");
  ASSERT_EQ(renderer_.alerts.size(), 1u);
  const NSAlert& alert = renderer_.alerts.front();
  EXPECT_EQ(alert.alertStyle, NSAlertStyle::warning);
  EXPECT_EQ(alert.messageText, "Invert Color could not convert every image");
  EXPECT_EQ(alert.informativeText, "a.png: b.\nc.png: d.");
  EXPECT_EQ(alert.buttons, std::vector<std::string>{"OK"});
}

TEST_F(FailureAlert, BringsTheApplicationToTheFrontFirst) {
  const RecordingApplication application(log_);
  showFailureAlert("t", "i");
  EXPECT_EQ(log_.calls(), (std::vector<std::string>{"activate ignoring others", "alert"}));
}

TEST_F(FailureAlert, IsShownWithoutAnApplicationToActivate) {
  ASSERT_EQ(NSApplication::shared(), nullptr);
  showFailureAlert("t", "i");
  EXPECT_EQ(log_.calls(), std::vector<std::string>{"alert"});
}

TEST_F(FailureAlert, FromABackgroundThreadRunsOnTheMainThreadAndIsWaitedFor) {
  std::thread worker([&] {
    showFailureAlert("t", "i");
    log_.add("worker goes on");
    MainLoop::stop();
  });
  MainLoop::run();
  worker.join();
  EXPECT_EQ(log_.calls(), (std::vector<std::string>{"alert", "worker goes on"}));
}

TEST_F(FailureAlert, IsNotShownWhenEveryFileWasConverted) {
  RecordingExtensionContext context(log_);
  reportBatch(context, {}, "title");
  EXPECT_EQ(log_.calls(), std::vector<std::string>{"complete with 0 items"});
}

TEST_F(FailureAlert, IsDismissedBeforeTheRequestIsCancelled) {
  RecordingExtensionContext context(log_);
  reportBatch(context, {fileFailure("a.png", "x."), fileFailure("b.png", "y.")}, "The title");
  EXPECT_EQ(log_.calls(), (std::vector<std::string>{"alert", "cancel 1"}));
  EXPECT_EQ(renderer_.alerts.at(0).messageText, "The title");
  EXPECT_EQ(renderer_.alerts.at(0).informativeText, "a.png: x.\nb.png: y.");
  EXPECT_EQ(description(context.errors.at(0)), "a.png: x.\nb.png: y.");
}

}  // namespace
}  // namespace ostra::test
