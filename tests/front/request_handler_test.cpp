#include "front/request_handler.h"

#include <gtest/gtest.h>

#include "platform/dispatch/main_loop.h"
#include "tests/doubles/extension_context.h"
#include "tests/doubles/image.h"
#include "tests/doubles/item_provider.h"
#include "tests/doubles/workbench.h"

namespace ostra::test {
namespace {

using Strings = std::vector<std::string>;

class RequestHandler : public testing::Test {
 protected:
  /// Opaque, so that the jpeg kind leaves it as it is and needs no surface.
  void addFile(const std::string& path, const std::string& type = "public.jpeg") {
    const CGImageRef image = makeImage(packedFormat(1, 1, 8, 4, CGImageAlphaInfo::noneSkipLast), nullptr);
    bench_.sources.files[path] = {.type = type, .image = image};
  }
  std::shared_ptr<ScriptedItemProvider> provider(const std::string& path) {
    auto provider = std::make_shared<ScriptedItemProvider>(bench_.log);
    provider->url = URL::fileURLWithPath(path);
    return provider;
  }
  void addItem(std::vector<std::shared_ptr<NSItemProvider>> attachments) {
    context_->items.push_back(std::make_shared<NSExtensionItem>(std::move(attachments)));
  }
  void configure(const char* kind) { bench_.bundle.info.insert_or_assign("NIVEQuickAction", kind); }
  void begin() { OstraQuickActionRequestHandler().beginRequestWithExtensionContext(context_); }
  void turnUntilEnded() {
    context_->ended = [] { MainLoop::stop(); };
    MainLoop::run();
  }
  void runToItsEnd() {
    begin();
    turnUntilEnded();
  }

  Workbench bench_;
  std::shared_ptr<RecordingExtensionContext> context_ =
      std::make_shared<RecordingExtensionContext>(bench_.log);
};

TEST_F(RequestHandler, CancelsWithoutAConversion) {
  addItem({provider("/a.jpg")});
  begin();
  ASSERT_EQ(context_->errors.size(), 1u);
  EXPECT_EQ(context_->errors[0].code(), 2);
  EXPECT_EQ(bench_.log.calls(), (Strings{"bundle NIVEQuickAction", "cancel 2"}));
}

TEST_F(RequestHandler, CancelsForAnUnknownConversion) {
  configure("sepia");
  addItem({provider("/a.jpg")});
  begin();
  EXPECT_EQ(bench_.log.calls(), (Strings{"bundle NIVEQuickAction", "cancel 2"}));
}

TEST_F(RequestHandler, LeavesTheProfileConversionToTheChooser) {
  configure("convert-color-profile");
  addItem({provider("/a.jpg")});
  begin();
  EXPECT_EQ(bench_.log.calls(), (Strings{"bundle NIVEQuickAction", "cancel 2"}));
}

TEST_F(RequestHandler, LooksAtTheConversionBeforeTheItems) {
  begin();
  EXPECT_EQ(context_->errors.at(0).code(), 2);
}

TEST_F(RequestHandler, CancelsWithoutItems) {
  configure("invert");
  begin();
  EXPECT_EQ(context_->errors.at(0).code(), 3);
}

TEST_F(RequestHandler, CancelsWhenNoItemHasAnAttachment) {
  configure("invert");
  addItem({});
  addItem({});
  begin();
  EXPECT_EQ(bench_.log.calls(), (Strings{"bundle NIVEQuickAction", "cancel 3"}));
}

TEST_F(RequestHandler, SkipsForeignItemsWithoutAWord) {
  configure("jpg");
  context_->items.push_back(std::make_shared<NSObject>());
  begin();
  EXPECT_EQ(bench_.log.calls(), (Strings{"bundle NIVEQuickAction", "cancel 3"}));

  addFile("/a.jpg");
  addItem({provider("/a.jpg")});
  context_->items.push_back(std::make_shared<NSObject>());
  runToItsEnd();
  EXPECT_EQ(bench_.log.calls().back(), "complete with 0 items");
}

TEST_F(RequestHandler, RefusesWithoutAlertAndWithoutALogLine) {
  begin();
  configure("invert");
  begin();
  EXPECT_EQ(context_->errors.size(), 2u);
  EXPECT_TRUE(bench_.renderer.alerts.empty());
  EXPECT_TRUE(bench_.sink.lines.empty());
}

TEST_F(RequestHandler, FlattensTheAttachmentsOfAllItemsInOrder) {
  const auto a = provider("/a"), b = provider("/b"), c = provider("/c");
  const auto first = std::make_shared<NSExtensionItem>(std::vector<std::shared_ptr<NSItemProvider>>{a, b});
  const auto second = std::make_shared<NSExtensionItem>(std::vector<std::shared_ptr<NSItemProvider>>{c});
  EXPECT_EQ(collectProviders({first, second}), (std::vector<std::shared_ptr<NSItemProvider>>{a, b, c}));
  EXPECT_TRUE(collectProviders({}).empty());
}

TEST_F(RequestHandler, CompletesWithNoItemsAndNoHandlerWhenEveryFileWasConverted) {
  configure("jpg");
  addFile("/a.jpg");
  addFile("/b.jpg");
  addItem({provider("/a.jpg"), provider("/b.jpg")});
  runToItsEnd();
  EXPECT_EQ(bench_.log.calls().back(), "complete with 0 items");
  EXPECT_TRUE(bench_.renderer.alerts.empty());
}

TEST_F(RequestHandler, GivesTheEngineQuality09AndNoTargetSpace) {
  configure("jpg");
  addFile("/a.jpg");
  addItem({provider("/a.jpg")});
  runToItsEnd();
  const Properties properties = bench_.destinations.encodings.at(0).properties.value();
  EXPECT_EQ(properties.tree, (Dictionary{{"kCGImageDestinationLossyCompressionQuality", 0.9}}));
}

TEST_F(RequestHandler, ShowsTheAlertThenCancelsWhenOneOfTheFilesFailed) {
  configure("jpg");
  addFile("/image.jpg");
  addItem({provider("/text.txt"), provider("/image.jpg")});
  runToItsEnd();
  EXPECT_EQ(bench_.log.callsBeginningWith({"alert", "cancel", "complete"}), (Strings{"alert", "cancel 1"}));
  EXPECT_EQ(bench_.renderer.alerts.at(0).informativeText, "text.txt: not an image ImageIO can read.");
  EXPECT_EQ(bench_.writing.files.size(), 1u);
}

TEST_F(RequestHandler, TitlesTheAlertWithTheKindsTitle) {
  configure("jpg");
  addItem({provider("/text.txt")});
  runToItsEnd();
  EXPECT_EQ(bench_.renderer.alerts.at(0).messageText, "Convert to JPG could not convert every image");
}

TEST_F(RequestHandler, TitlesTheAlertWithTheBundlesDisplayNameWhereThereIsOne) {
  configure("jpg");
  bench_.bundle.info.insert_or_assign("CFBundleDisplayName", "As JPEG");
  addItem({provider("/text.txt")});
  runToItsEnd();
  EXPECT_EQ(bench_.renderer.alerts.at(0).messageText, "As JPEG could not convert every image");
}

TEST_F(RequestHandler, ReturnsBeforeAnythingIsConvertedAndNeedNotOutliveTheRequest) {
  configure("jpg");
  addFile("/a.jpg");
  addItem({provider("/a.jpg")});
  auto handler = std::make_unique<OstraQuickActionRequestHandler>();
  handler->beginRequestWithExtensionContext(context_);
  // The main loop has not turned, so a handler that waited for the end could not be here.
  EXPECT_TRUE(bench_.log.callsBeginningWith({"complete", "cancel"}).empty());
  handler.reset();
  turnUntilEnded();
  EXPECT_EQ(bench_.log.calls().back(), "complete with 0 items");
}

TEST_F(RequestHandler, HasNoFieldsOfItsOwn) {
  EXPECT_EQ(sizeof(OstraQuickActionRequestHandler), sizeof(NSExtensionRequestHandling));
}

}  // namespace
}  // namespace ostra::test
