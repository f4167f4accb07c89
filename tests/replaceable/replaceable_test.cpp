#include <gtest/gtest.h>

#include "chooser/profile_view_controller.h"
#include "front/request_handler.h"
#include "platform/dispatch/main_loop.h"
#include "tests/doubles/bundle.h"
#include "tests/doubles/data_reading.h"
#include "tests/doubles/data_writing.h"
#include "tests/doubles/extension_context.h"
#include "tests/doubles/graphics_creation.h"
#include "tests/doubles/image.h"
#include "tests/doubles/image_destination.h"
#include "tests/doubles/image_source.h"
#include "tests/doubles/item_provider.h"
#include "tests/doubles/profile_enumeration.h"
#include "tests/doubles/renderer.h"
#include "tests/doubles/user_defaults.h"
#include "tests/replaceable/stand_in.h"

namespace ostra::test {
namespace {

class OnAnotherPlatform : public testing::Test {
 protected:
  OnAnotherPlatform() {
    standInLog().clear();
    standIn<RecordingGraphicsCreation>().paint = [](CGBitmapContext& surface, const CGImage& image) {
      std::copy_n(image.data(), image.bytesPerRow(), surface.data());
    };
    context_->ended = [] { MainLoop::stop(); };
  }

  void addFile(const std::string& path) {
    const auto provider = std::make_shared<ScriptedItemProvider>(standInLog());
    provider->url = URL::fileURLWithPath(path);
    context_->items.push_back(
        std::make_shared<NSExtensionItem>(std::vector<std::shared_ptr<NSItemProvider>>{provider}));
  }
  void perform(const char* kind) {
    standIn<RecordingBundle>().info.insert_or_assign("NIVEQuickAction", kind);
    OstraQuickActionRequestHandler().beginRequestWithExtensionContext(context_);
    MainLoop::run();
  }

  std::shared_ptr<RecordingExtensionContext> context_ =
      std::make_shared<RecordingExtensionContext>(standInLog());
};

TEST_F(OnAnotherPlatform, ARequestRunsFromItsBeginningToItsEnd) {
  const auto format = packedFormat(1, 1, 8, 4, CGImageAlphaInfo::premultipliedLast);
  standIn<RecordingImageSourceOpening>().files["/a.png"].image =
      makeImage(format, CGColorSpace::createWithName(kCGColorSpaceSRGB), {10, 20, 30, 40});
  addFile("/a.png");
  perform("invert");

  const CGImageRef written = standIn<RecordingImageDestinationCreation>().encodings.at(0).image;
  EXPECT_EQ(Bytes(written->data(), written->data() + 4), (Bytes{30, 20, 10, 40}));
  EXPECT_EQ(standIn<RecordingDataWriting>().files.count("/replacement/a.png"), 1u);
  EXPECT_EQ(standInLog().callsBeginningWith({"replace", "log", "complete"}),
            (std::vector<std::string>{"replace /a.png with /replacement/a.png",
                                      "log info invert: wrote a.png (in place)", "complete with 0 items"}));
}

TEST_F(OnAnotherPlatform, AFailureIsShownAndCancelsTheRequest) {
  addFile("/notes.txt");
  perform("grayscale-jpg");
  EXPECT_EQ(standInLog().callsBeginningWith({"alert", "cancel"}),
            (std::vector<std::string>{"alert", "cancel 1"}));
  EXPECT_EQ(standIn<RecordingRenderer>().alerts.at(0).informativeText,
            "notes.txt: not an image ImageIO can read.");
}

TEST_F(OnAnotherPlatform, ThePanelOffersRemembersAndConverts) {
  standIn<RecordingDataReading>().files["/profile"] = {'g', 'r', 'a', 'y'};
  standIn<ScriptedProfileEnumeration>().add("Paper", "/profile", "GRAY");
  standIn<RecordingUserDefaults>().settings["OstraQuickActionLastProfile"] = "Paper";
  const auto format = packedFormat(1, 1, 8, 4, CGImageAlphaInfo::noneSkipLast);
  standIn<RecordingImageSourceOpening>().files["/a.png"].image =
      makeImage(format, CGColorSpace::createWithName(kCGColorSpaceSRGB));
  addFile("/a.png");

  const auto panel = std::make_shared<OstraQuickActionProfileViewController>();
  panel->beginRequestWithExtensionContext(context_);
  panel->view();
  panel->convert();
  MainLoop::run();
  const CGImageRef written = standIn<RecordingImageDestinationCreation>().encodings.back().image;
  EXPECT_EQ(written->colorSpace()->model(), CGColorSpaceModel::monochrome);
  EXPECT_EQ(standInLog().callsBeginningWith({"write setting", "complete"}),
            (std::vector<std::string>{"write setting OstraQuickActionLastProfile = Paper",
                                      "complete with 0 items"}));
}

}  // namespace
}  // namespace ostra::test
