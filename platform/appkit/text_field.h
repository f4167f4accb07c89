#pragma once
#include <memory>
#include <string>

#include "platform/appkit/font.h"
#include "platform/appkit/view.h"

namespace ostra {

/// A text that the user only reads.
class NSTextField : public NSView {
 public:
  /// One line.
  static std::shared_ptr<NSTextField> labelWithString(std::string text);
  /// As many lines as its width asks for.
  static std::shared_ptr<NSTextField> wrappingLabelWithString(std::string text);

  const std::string& stringValue() const { return text_; }
  void setStringValue(std::string text);
  bool wraps() const { return wraps_; }
  const NSFont& font() const { return font_; }
  void setFont(NSFont font);
  NSColor textColor() const { return color_; }
  void setTextColor(NSColor color);

 private:
  std::string text_;
  bool wraps_ = false;
  NSFont font_ = NSFont::systemFontOfSize(NSFont::systemFontSize());
  NSColor color_ = NSColor::labelColor;
};

}  // namespace ostra
