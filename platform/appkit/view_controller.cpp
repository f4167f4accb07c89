#include "platform/appkit/view_controller.h"

namespace ostra {

void NSViewController::beginRequestWithExtensionContext(std::shared_ptr<NSExtensionContext> context) {
  context_ = std::move(context);
}

const std::shared_ptr<NSView>& NSViewController::view() {
  if (!view_) {
    loadView();
    viewDidLoad();
  }
  return view_;
}

}  // namespace ostra
