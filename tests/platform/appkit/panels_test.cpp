#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/appkit/application.h"
#include "platform/foundation/service.h"
#include "tests/doubles/renderer.h"

namespace ostra {
namespace {

using test::CallLog;
using test::RecordingRenderer;
using testing::ElementsAre;
using Setting = NSSavePanel::Setting;

class PanelsTest : public testing::Test {
 protected:
  CallLog log_;
  RecordingRenderer renderer_{log_};
  Service<Renderer>::Override override_{renderer_};
};

TEST_F(PanelsTest, AnAlertIsShownAsItWasDescribed) {
  NSAlert alert;
  alert.messageText = "Invert Color could not convert every image";
  alert.informativeText = "a.png: reason.";
  alert.addButtonWithTitle("OK");
  alert.runModal();
  ASSERT_EQ(renderer_.alerts.size(), 1u);
  EXPECT_EQ(renderer_.alerts[0].messageText, alert.messageText);
  EXPECT_EQ(renderer_.alerts[0].informativeText, alert.informativeText);
  EXPECT_THAT(renderer_.alerts[0].buttons, ElementsAre("OK"));
  EXPECT_EQ(renderer_.alerts[0].alertStyle, NSAlertStyle::warning);
}

TEST_F(PanelsTest, ASavePanelRemembersWhatWasSetInItsOrder) {
  NSSavePanel panel;
  panel.setTitle("title");
  panel.setMessage("message");
  panel.setNameFieldStringValue("a.png");
  panel.setDirectoryURL(URL::fileURLWithPath("/pictures"));
  panel.setAllowedContentTypes({UTType::png()});
  panel.setCanCreateDirectories(true);
  panel.runModal();
  ASSERT_EQ(renderer_.panels.size(), 1u);
  const NSSavePanel& shown = renderer_.panels[0];
  EXPECT_THAT(shown.settings(), ElementsAre(Setting::title, Setting::message, Setting::nameFieldStringValue,
                                            Setting::directoryURL, Setting::allowedContentTypes,
                                            Setting::canCreateDirectories));
  EXPECT_EQ(shown.title() + shown.message() + shown.nameFieldStringValue(), "titlemessagea.png");
  EXPECT_EQ(shown.directoryURL()->path(), "/pictures");
  EXPECT_THAT(shown.allowedContentTypes(), ElementsAre(UTType::png()));
  EXPECT_TRUE(shown.canCreateDirectories());
}

TEST_F(PanelsTest, ASavePanelGivesBackTheAnswer) {
  renderer_.answers.push_back({NSModalResponseOK, URL::fileURLWithPath("/pictures/b.png")});
  NSSavePanel panel;
  EXPECT_EQ(panel.runModal(), NSModalResponseOK);
  EXPECT_EQ(panel.url()->path(), "/pictures/b.png");
  EXPECT_EQ(panel.runModal(), NSModalResponseCancel);
  EXPECT_FALSE(panel.url());
}

TEST(Application, ExistsWhileSomebodySaidSo) {
  struct Silent : NSApplication {
    void activateIgnoringOtherApps(bool) override {}
  } application;
  EXPECT_EQ(NSApplication::shared(), nullptr);
  NSApplication::setShared(&application);
  EXPECT_EQ(NSApplication::shared(), &application);
  NSApplication::setShared(nullptr);
  EXPECT_EQ(NSApplication::shared(), nullptr);
}

}  // namespace
}  // namespace ostra
