#include "platform/appkit/text_field.h"

namespace ostra {

std::shared_ptr<NSTextField> NSTextField::labelWithString(std::string text) {
  auto label = std::make_shared<NSTextField>();
  label->text_ = std::move(text);
  return label;
}

std::shared_ptr<NSTextField> NSTextField::wrappingLabelWithString(std::string text) {
  auto label = labelWithString(std::move(text));
  label->wraps_ = true;
  return label;
}

void NSTextField::setStringValue(std::string text) {
  text_ = std::move(text);
  changed();
}

void NSTextField::setFont(NSFont font) {
  font_ = font;
  changed();
}

void NSTextField::setTextColor(NSColor color) {
  color_ = color;
  changed();
}

}  // namespace ostra
