#pragma once
#include <memory>
#include <vector>

#include "platform/appkit/view.h"

namespace ostra {

enum class NSUserInterfaceLayoutOrientation { horizontal = 0, vertical = 1 };

/// How the views of a stack line up across it: a column at its leading edge, a row at its middle.
enum class NSStackAlignment { leading, centerY };

/// Views in a row or a column. Along the stack a plain view without contents takes what room is left.
class NSStackView : public NSView {
 public:
  static std::shared_ptr<NSStackView> stackViewWithViews(
      const std::vector<std::shared_ptr<NSView>>& views,
      NSUserInterfaceLayoutOrientation orientation = NSUserInterfaceLayoutOrientation::horizontal);

  NSUserInterfaceLayoutOrientation orientation() const { return orientation_; }
  /// Starts as `leading` in a column and `centerY` in a row.
  NSStackAlignment alignment() const { return alignment_; }
  void setAlignment(NSStackAlignment alignment) { alignment_ = alignment; }
  /// Between neighbours, in points; 8 at first.
  double spacing() const { return spacing_; }
  void setSpacing(double spacing) { spacing_ = spacing; }

 private:
  NSUserInterfaceLayoutOrientation orientation_ = NSUserInterfaceLayoutOrientation::horizontal;
  NSStackAlignment alignment_ = NSStackAlignment::centerY;
  double spacing_ = 8;
};

}  // namespace ostra
