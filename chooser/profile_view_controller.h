#pragma once
#include <memory>
#include <vector>

#include "chooser/profile_catalog.h"
#include "platform/appkit/button.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/progress_indicator.h"
#include "platform/appkit/text_field.h"
#include "platform/appkit/view_controller.h"
#include "platform/extension/item_provider.h"

namespace ostra {

/// The principal object of the profile conversion: the panel that asks for the profile before anything is
/// converted, starts the engine with the answer and ends the request when the engine is done. Made with
/// `std::make_shared`. Main thread.
class OstraQuickActionProfileViewController : public NSViewController {
 public:
  void loadView() override;
  void viewDidLoad() override;

  /// What the buttons do.
  void convert();
  void cancel();

 private:
  std::shared_ptr<NSView> profileRow() const;
  std::shared_ptr<NSView> buttonRow() const;
  void layOut(NSView& root, const std::vector<std::shared_ptr<NSView>>& rows);
  void connectButtons();

  void fillPopup(std::size_t builtInCount);
  void selectRememberedProfile();
  /// Null when nothing valid is chosen.
  const OstraColorProfile* chosenProfile() const;

  void disableControls();
  void startEngine(std::vector<std::shared_ptr<NSItemProvider>> providers, const CGColorSpaceRef& space);

  const std::shared_ptr<NSPopUpButton> popup_ = std::make_shared<NSPopUpButton>();
  const std::shared_ptr<NSButton> convertButton_ = std::make_shared<NSButton>("Convert");
  const std::shared_ptr<NSButton> cancelButton_ = std::make_shared<NSButton>("Cancel");
  const std::shared_ptr<NSProgressIndicator> spinner_ = std::make_shared<NSProgressIndicator>();
  const std::shared_ptr<NSTextField> summary_ = NSTextField::wrappingLabelWithString("");
  /// A pop-up item that names a profile has the profile's index here as its tag.
  std::vector<OstraColorProfile> profiles_;
};

}  // namespace ostra
