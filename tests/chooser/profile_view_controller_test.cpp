// What the panel does.
#include "chooser/profile_view_controller.h"

#include "platform/dispatch/main_loop.h"
#include "tests/chooser/panel_fixture.h"
#include "tests/doubles/image.h"

namespace ostra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileChooser : public PanelFixture {
 protected:
  ProfileChooser() {
    context_->ended = [] { MainLoop::stop(); };
  }

  std::shared_ptr<ScriptedItemProvider> provider(const std::string& path) {
    auto provider = std::make_shared<ScriptedItemProvider>(bench_.log);
    provider->url = URL::fileURLWithPath(path);
    return provider;
  }
  void addItem(std::vector<std::shared_ptr<NSItemProvider>> attachments) {
    context_->items.push_back(std::make_shared<NSExtensionItem>(std::move(attachments)));
  }
  /// A picture in the request whose conversion succeeds.
  void addPicture(const std::string& path) {
    const auto format = packedFormat(1, 1, 8, 4, CGImageAlphaInfo::noneSkipLast);
    bench_.sources.files[path] = {
        .type = "public.png", .image = makeImage(format, CGColorSpace::createWithName(kCGColorSpaceSRGB))};
    addItem({provider(path)});
  }
  /// Shows the panel of a request that has begun.
  void show() {
    controller_->beginRequestWithExtensionContext(context_);
    view();
    log().clear();
  }
  void choose(const std::string& title) {
    for (const NSMenuItem& item : popup().items()) {
      if (!item.isSeparator && item.title == title) popup().selectItemWithTag(item.tag);
    }
    ASSERT_EQ(choice(), title);
  }
  std::vector<std::string> stored() { return log().callsBeginningWith({"write setting"}); }
};

TEST_F(ProfileChooser, CancelsTheRequestAsTheUser) {
  addPicture("/a.png");
  show();
  cancelButton().performClick();
  ASSERT_EQ(context_->errors.size(), 1u);
  EXPECT_EQ(context_->errors[0].domain(), NSCocoaErrorDomain);
  EXPECT_EQ(context_->errors[0].code(), 3072);
  EXPECT_TRUE(context_->errors[0].userInfo().empty());
  EXPECT_THAT(log().calls(), ElementsAre("cancel 3072"));
  MainLoop::run();
}

TEST_F(ProfileChooser, RemembersNothingWhenItIsCancelled) {
  addPicture("/a.png");
  show();
  choose("Display P3");
  cancelButton().performClick();
  EXPECT_THAT(stored(), IsEmpty());
  MainLoop::run();
}

TEST_F(ProfileChooser, DoesNothingWithoutARequest) {
  view();
  log().clear();
  popup().deselect();
  controller_->convert();
  controller_->cancel();
  EXPECT_THAT(log().calls(), IsEmpty());
}

TEST_F(ProfileChooser, OnlyBeepsWithoutAChoice) {
  addPicture("/a.png");
  show();
  popup().deselect();
  convertButton().performClick();
  EXPECT_THAT(log().calls(), ElementsAre("beep"));
  EXPECT_TRUE(convertButton().isEnabled() && cancelButton().isEnabled() && popup().isEnabled());
  EXPECT_FALSE(spinner().isAnimating());
}

TEST_F(ProfileChooser, OnlyBeepsForAnItemThatNamesNoProfile) {
  show();
  for (const int tag : {-1, 8, 1000}) {
    popup().addItem({"Foreign", tag, false});
    popup().selectItemWithTag(tag);
    convertButton().performClick();
  }
  EXPECT_THAT(log().calls(), ElementsAre("beep", "beep", "beep"));
}

TEST_F(ProfileChooser, RemembersTheChoiceBeforeItLooksAtTheItems) {
  show();
  choose("Display P3");
  convertButton().performClick();
  EXPECT_THAT(log().calls(),
              ElementsAre("write setting OstraQuickActionLastProfile = Display P3", "cancel 3"));
  EXPECT_EQ(context_->errors.at(0).localizedDescription(), "No image was selected.");
  EXPECT_EQ(context_->errors.at(0).domain(), "org.ostra.QuickActions");
  EXPECT_TRUE(convertButton().isEnabled());
  EXPECT_THAT(bench_.renderer.alerts, IsEmpty());
  MainLoop::run();
}

TEST_F(ProfileChooser, CountsForeignAndEmptyItemsAsNoImage) {
  context_->items.push_back(std::make_shared<NSObject>());
  addItem({});
  show();
  convertButton().performClick();
  EXPECT_THAT(ends(), ElementsAre("cancel 3"));
  MainLoop::run();
}

TEST_F(ProfileChooser, ConvertsToTheChosenProfileAndCompletesTheRequest) {
  addPicture("/a.png");
  show();
  choose("Adobe RGB (1998)");
  convertButton().performClick();
  MainLoop::run();
  const CGImageRef written = bench_.destinations.encodings.at(0).image;
  EXPECT_EQ(written->colorSpace()->name(), kCGColorSpaceAdobeRGB1998);
  EXPECT_THAT(ends(), ElementsAre("complete with 0 items"));
  EXPECT_THAT(stored(), ElementsAre("write setting OstraQuickActionLastProfile = Adobe RGB (1998)"));
  EXPECT_THAT(bench_.renderer.alerts, IsEmpty());
}

TEST_F(ProfileChooser, ConvertsToTheInstalledProfileThatIsChosenBehindTheSeparator) {
  install("Canvas");
  install("Paper");
  addPicture("/a.png");
  show();
  choose("Paper");
  convertButton().performClick();
  MainLoop::run();
  EXPECT_EQ(bench_.destinations.encodings.at(0).image->colorSpace()->model(), CGColorSpaceModel::monochrome);
  EXPECT_THAT(stored(), ElementsAre("write setting OstraQuickActionLastProfile = Paper"));
}

TEST_F(ProfileChooser, GivesTheEncoderTheQualityOfAllActions) {
  const auto format = packedFormat(1, 1, 8, 4, CGImageAlphaInfo::noneSkipLast);
  bench_.sources.files["/a.jpg"] = {
      .type = "public.jpeg", .image = makeImage(format, CGColorSpace::createWithName(kCGColorSpaceSRGB))};
  addItem({provider("/a.jpg")});
  show();
  convertButton().performClick();
  MainLoop::run();
  const Properties properties = bench_.destinations.encodings.at(0).properties.value();
  EXPECT_EQ(properties.tree.at("kCGImageDestinationLossyCompressionQuality"), Value(0.9));
}

TEST_F(ProfileChooser, DisablesItsControlsForGoodAndSpinsUntilTheEnd) {
  addPicture("/a.png");
  show();
  convertButton().performClick();
  EXPECT_FALSE(convertButton().isEnabled() || cancelButton().isEnabled() || popup().isEnabled());
  EXPECT_TRUE(spinner().isAnimating());
  MainLoop::run();
  EXPECT_FALSE(convertButton().isEnabled() || cancelButton().isEnabled() || popup().isEnabled());
  EXPECT_FALSE(spinner().isAnimating());
}

TEST_F(ProfileChooser, CannotBeCancelledNorStartedAgainWhileItConverts) {
  addPicture("/a.png");
  show();
  convertButton().performClick();
  convertButton().performClick();
  cancelButton().performClick();
  MainLoop::run();
  EXPECT_THAT(ends(), ElementsAre("complete with 0 items"));
  EXPECT_EQ(bench_.destinations.encodings.size(), 1u);
}

TEST_F(ProfileChooser, ConvertsTheAttachmentsOfAllItemsInTheirOrder) {
  addItem({provider("/1"), provider("/2")});
  context_->items.push_back(std::make_shared<NSObject>());
  addItem({provider("/3")});
  show();
  convertButton().performClick();
  MainLoop::run();
  EXPECT_EQ(bench_.renderer.alerts.at(0).informativeText,
            "1: not an image ImageIO can read.\n2: not an image ImageIO can read.\n"
            "3: not an image ImageIO can read.");
}

TEST_F(ProfileChooser, ShowsTheAlertUnderItsFixedTitleThenCancelsWithTheJoinedError) {
  bench_.bundle.info.insert_or_assign("CFBundleDisplayName", "Another Name");
  addItem({provider("/text.txt")});
  addPicture("/a.png");
  show();
  convertButton().performClick();
  MainLoop::run();
  EXPECT_THAT(log().callsBeginningWith({"alert", "cancel", "complete"}), ElementsAre("alert", "cancel 1"));
  const NSAlert& alert = bench_.renderer.alerts.at(0);
  EXPECT_EQ(alert.messageText, "Convert Color Profile could not convert every image");
  EXPECT_EQ(alert.informativeText, "text.txt: not an image ImageIO can read.");
  EXPECT_EQ(context_->errors.at(0).localizedDescription(), alert.informativeText);
  EXPECT_EQ(bench_.writing.files.size(), 1u);
  EXPECT_FALSE(spinner().isAnimating());
}

TEST_F(ProfileChooser, StopsTheSpinnerBeforeTheAlert) {
  addItem({provider("/text.txt")});
  show();
  bool spunDuringAlert = true;
  spinner().setObserver([&] { spunDuringAlert = spunDuringAlert && bench_.renderer.alerts.empty(); });
  convertButton().performClick();
  MainLoop::run();
  EXPECT_TRUE(spunDuringAlert);
  spinner().setObserver(nullptr);
}

// The host may let the panel go; what was begun is ended, and the request told.
TEST_F(ProfileChooser, NeedNotOutliveItsConversion) {
  install("Paper");
  addPicture("/a.png");
  show();
  choose("Paper");
  convertButton().performClick();
  const std::weak_ptr<OstraQuickActionProfileViewController> gone = controller_;
  controller_.reset();
  EXPECT_TRUE(gone.expired());
  const std::weak_ptr<RecordingExtensionContext> kept = context_;
  CallLog& calls = log();
  context_.reset();
  EXPECT_FALSE(kept.expired());
  MainLoop::run();
  EXPECT_THAT(calls.callsBeginningWith({"complete", "cancel"}), ElementsAre("complete with 0 items"));
  EXPECT_EQ(bench_.destinations.encodings.at(0).image->colorSpace()->model(), CGColorSpaceModel::monochrome);
}

TEST_F(ProfileChooser, IsNotKeptByItsButtons) {
  show();
  const auto root = controller_->view();
  const std::weak_ptr<OstraQuickActionProfileViewController> gone = controller_;
  controller_.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_TRUE(pressButtonWithKey(root, kReturnKey));
  EXPECT_TRUE(pressButtonWithKey(root, kEscapeKey));
  EXPECT_THAT(log().calls(), IsEmpty());
}

TEST_F(ProfileChooser, ConvertsByReturnAndCancelsByEscape) {
  addPicture("/a.png");
  show();
  EXPECT_TRUE(pressButtonWithKey(controller_->view(), "\r"));
  MainLoop::run();
  EXPECT_THAT(ends(), ElementsAre("complete with 0 items"));
  controller_ = std::make_shared<OstraQuickActionProfileViewController>();
  show();
  EXPECT_TRUE(pressButtonWithKey(controller_->view(), "\x1b"));
  EXPECT_THAT(ends(), ElementsAre("cancel 3072"));
  MainLoop::run();
}

TEST_F(ProfileChooser, ConvertsAlsoWhenTheChoiceCannotBeRemembered) {
  defaults_.losesWrites = true;
  addPicture("/a.png");
  show();
  convertButton().performClick();
  MainLoop::run();
  EXPECT_THAT(ends(), ElementsAre("complete with 0 items"));
}

}  // namespace
}  // namespace ostra::test
