#pragma once
#include "platform/appkit/view.h"

namespace ostra {

enum class NSProgressIndicatorStyle { bar = 0, spinning = 1 };
enum class NSControlSize { regular = 0, small = 1 };

/// Shows that work goes on, not how much of it is done.
class NSProgressIndicator : public NSView {
 public:
  NSProgressIndicatorStyle style() const { return style_; }
  void setStyle(NSProgressIndicatorStyle style) { style_ = style; }
  NSControlSize controlSize() const { return size_; }
  void setControlSize(NSControlSize size) { size_ = size; }
  bool isDisplayedWhenStopped() const { return displayedWhenStopped_; }
  void setDisplayedWhenStopped(bool displayed) { displayedWhenStopped_ = displayed; }

  bool isAnimating() const { return animating_; }
  void startAnimation() { setAnimating(true); }
  void stopAnimation() { setAnimating(false); }

 private:
  void setAnimating(bool animating) {
    animating_ = animating;
    changed();
  }

  NSProgressIndicatorStyle style_ = NSProgressIndicatorStyle::bar;
  NSControlSize size_ = NSControlSize::regular;
  bool displayedWhenStopped_ = true;
  bool animating_ = false;
};

}  // namespace ostra
