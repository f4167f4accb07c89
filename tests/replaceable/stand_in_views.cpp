#include "platform/appkit/beep.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/stack_view.h"
#include "platform/appkit/text_field.h"
#include "platform/appkit/view_controller.h"
#include "platform/foundation/text_comparison.h"
#include "tests/doubles/data_reading.h"
#include "tests/doubles/profile_enumeration.h"
#include "tests/doubles/renderer.h"
#include "tests/doubles/user_defaults.h"
#include "tests/replaceable/stand_in.h"

namespace ostra {

// What the panel is described with.

void NSView::addSubview(const std::shared_ptr<NSView>& view) { subviews_.push_back(view); }
void NSView::changed() const {}
NSLayoutConstraint NSLayoutAnchor::constraintEqualToAnchor(NSLayoutAnchor other, double constant) const {
  return {*this, other, constant};
}
void NSLayoutConstraint::activateConstraints(const std::vector<NSLayoutConstraint>&) {}

std::shared_ptr<NSStackView> NSStackView::stackViewWithViews(
    const std::vector<std::shared_ptr<NSView>>& views, NSUserInterfaceLayoutOrientation /*orientation*/) {
  auto stack = std::make_shared<NSStackView>();
  for (const auto& view : views) stack->addSubview(view);
  return stack;
}

std::shared_ptr<NSTextField> NSTextField::labelWithString(std::string text) {
  auto label = std::make_shared<NSTextField>();
  label->text_ = std::move(text);
  return label;
}
std::shared_ptr<NSTextField> NSTextField::wrappingLabelWithString(std::string text) {
  return labelWithString(std::move(text));
}
void NSTextField::setStringValue(std::string text) { text_ = std::move(text); }
void NSTextField::setFont(NSFont font) { font_ = font; }
void NSTextField::setTextColor(NSColor color) { color_ = color; }

void NSControl::setEnabled(bool enabled) { enabled_ = enabled; }
void NSControl::sendAction() const {
  if (enabled_ && action_) action_();
}
void NSPopUpButton::removeAllItems() { items_.clear(); }
void NSPopUpButton::addItem(NSMenuItem item) { items_.push_back(std::move(item)); }
const NSMenuItem* NSPopUpButton::selectedItem() const { return selected_ ? &items_[*selected_] : nullptr; }
bool NSPopUpButton::selectItemWithTag(int tag) {
  for (std::size_t i = 0; i < items_.size(); ++i) {
    if (!items_[i].isSeparator && items_[i].tag == tag) selected_ = i;
  }
  return selected_.has_value();
}

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
void NSBeep() { test::standIn<test::RecordingRenderer>().beep(); }

// What it asks.

NSUserDefaults& NSUserDefaults::standardUserDefaults() {
  return test::standIn<test::RecordingUserDefaults>();
}
void ColorSyncIterateInstalledProfiles(const ColorSyncProfileIterateCallback& callback) {
  test::standIn<test::ScriptedProfileEnumeration>().iterate(callback);
}
Bytes dataWithContentsOfURL(const URL& url) { return test::standIn<test::RecordingDataReading>().read(url); }

std::string lowercased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return lower;
}
NSComparisonResult localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
  const int order = lowercased(a).compare(lowercased(b));
  return order < 0   ? NSComparisonResult::orderedAscending
         : order > 0 ? NSComparisonResult::orderedDescending
                     : NSComparisonResult::orderedSame;
}

}  // namespace ostra
