#pragma once
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chooser/profile_view_controller.h"
#include "platform/appkit/view_search.h"
#include "platform/extension/extension_item.h"
#include "tests/doubles/data_reading.h"
#include "tests/doubles/extension_context.h"
#include "tests/doubles/item_provider.h"
#include "tests/doubles/profile_enumeration.h"
#include "tests/doubles/user_defaults.h"
#include "tests/doubles/workbench.h"

namespace ostra::test {

constexpr const char* kLastProfileKey = "OstraQuickActionLastProfile";

/// A panel, and everything that it asks replaced.
class PanelFixture : public testing::Test {
 protected:
  /// Installs a profile that is gray, whatever its name.
  void install(const std::string& name) {
    const ByteView icc =
        GraphicsCreation::standard().colorSpaceWithName(kCGColorSpaceGenericGrayGamma2_2)->iccData();
    reading_.files["/profile"] = {icc.begin(), icc.end()};
    found_.add(name, "/profile", "GRAY");
  }

  NSView& view() { return *controller_->view(); }
  template <class View>
  std::vector<std::shared_ptr<View>> all() {
    return viewsOfKind<View>(controller_->view());
  }
  NSPopUpButton& popup() { return *all<NSPopUpButton>().at(0); }
  NSButton& cancelButton() { return *all<NSButton>().at(0); }
  NSButton& convertButton() { return *all<NSButton>().at(1); }
  NSProgressIndicator& spinner() { return *all<NSProgressIndicator>().at(0); }

  /// The titles in the pop-up, a separator as a dash.
  std::vector<std::string> items() {
    std::vector<std::string> titles;
    for (const NSMenuItem& item : popup().items()) titles.push_back(item.isSeparator ? "-" : item.title);
    return titles;
  }
  std::string choice() {
    const NSMenuItem* item = popup().selectedItem();
    return item != nullptr ? item->title : "none";
  }

  CallLog& log() { return bench_.log; }
  std::vector<std::string> ends() { return log().callsBeginningWith({"complete", "cancel"}); }

  Workbench bench_;
  ScriptedProfileEnumeration found_{bench_.log};
  RecordingDataReading reading_{bench_.log};
  RecordingUserDefaults defaults_{bench_.log};
  std::shared_ptr<RecordingExtensionContext> context_ =
      std::make_shared<RecordingExtensionContext>(bench_.log);
  std::shared_ptr<OstraQuickActionProfileViewController> controller_ =
      std::make_shared<OstraQuickActionProfileViewController>();

 private:
  Service<ProfileEnumeration>::Override useFound_{found_};
  Service<DataReading>::Override useReading_{reading_};
  Service<NSUserDefaults>::Override useDefaults_{defaults_};
};

}  // namespace ostra::test
