#include "platform/appkit/stack_view.h"

namespace ostra {

std::shared_ptr<NSStackView> NSStackView::stackViewWithViews(
    const std::vector<std::shared_ptr<NSView>>& views, NSUserInterfaceLayoutOrientation orientation) {
  auto stack = std::make_shared<NSStackView>();
  stack->orientation_ = orientation;
  stack->alignment_ = orientation == NSUserInterfaceLayoutOrientation::vertical ? NSStackAlignment::leading
                                                                                : NSStackAlignment::centerY;
  for (const std::shared_ptr<NSView>& view : views) stack->addSubview(view);
  return stack;
}

}  // namespace ostra
