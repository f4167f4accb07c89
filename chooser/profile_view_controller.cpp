#include "chooser/profile_view_controller.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "engine/engine.h"
#include "front/batch_report.h"
#include "front/error.h"
#include "front/request_handler.h"
#include "platform/appkit/beep.h"
#include "platform/appkit/stack_view.h"
#include "platform/foundation/text_comparison.h"
#include "platform/foundation/user_defaults.h"

namespace ostra {
namespace {

constexpr std::string_view kLastProfileKey = "OstraQuickActionLastProfile";

constexpr NSRect kPanelFrame{0, 0, {460, 170}};
constexpr double kSideMargin = 20;
constexpr double kEndMargin = 18;
constexpr double kRowSpacing = 8;
constexpr double kColumnSpacing = 12;

constexpr const char* kTitle = "Convert Color Profile";
constexpr const char* kExplanation =
    "The selected images are converted to the chosen profile and rewritten in place (formats ImageIO cannot "
    "write, such as WebP or RAW, are saved next to the original as PNG).";
// Whatever the bundle is called: the panel is this one conversion's.
constexpr const char* kAlertTitle = "Convert Color Profile could not convert every image";

using Views = std::vector<std::shared_ptr<NSView>>;

std::shared_ptr<NSTextField> titleLabel() {
  auto title = NSTextField::labelWithString(kTitle);
  title->setFont(NSFont::boldSystemFontOfSize(NSFont::systemFontSize() + 1));
  return title;
}

std::shared_ptr<NSStackView> row(const Views& views) {
  auto row = NSStackView::stackViewWithViews(views, NSUserInterfaceLayoutOrientation::horizontal);
  row->setSpacing(kRowSpacing);
  return row;
}

std::shared_ptr<NSStackView> column(const Views& views) {
  auto column = NSStackView::stackViewWithViews(views, NSUserInterfaceLayoutOrientation::vertical);
  column->setAlignment(NSStackAlignment::leading);
  column->setSpacing(kColumnSpacing);
  column->setTranslatesAutoresizingMaskIntoConstraints(false);
  return column;
}

/// The profiles without those that are called like one of `others`, letter case aside.
std::vector<OstraColorProfile> without(std::vector<OstraColorProfile> profiles,
                                       const std::vector<OstraColorProfile>& others) {
  std::set<std::string> names;
  for (const OstraColorProfile& other : others) names.insert(lowercased(other.name));
  std::erase_if(profiles, [&names](const OstraColorProfile& profile) {
    return names.count(lowercased(profile.name)) > 0;
  });
  return profiles;
}

NSError userCancelled() { return NSError(NSCocoaErrorDomain, NSUserCancelledError); }

}  // namespace

// The view.

void OstraQuickActionProfileViewController::loadView() {
  auto root = std::make_shared<NSView>(kPanelFrame);
  summary_->setFont(NSFont::systemFontOfSize(NSFont::smallSystemFontSize()));
  summary_->setTextColor(NSColor::secondaryLabelColor);
  summary_->setStringValue(kExplanation);
  layOut(*root, {titleLabel(), profileRow(), summary_, buttonRow()});
  connectButtons();
  setPreferredContentSize(root->frame().size);
  setView(std::move(root));
}

std::shared_ptr<NSView> OstraQuickActionProfileViewController::profileRow() const {
  popup_->setTranslatesAutoresizingMaskIntoConstraints(false);
  return row({NSTextField::labelWithString("Profile:"), popup_});
}

std::shared_ptr<NSView> OstraQuickActionProfileViewController::buttonRow() const {
  spinner_->setStyle(NSProgressIndicatorStyle::spinning);
  spinner_->setControlSize(NSControlSize::small);
  spinner_->setDisplayedWhenStopped(false);
  const auto spacer = std::make_shared<NSView>();
  return row({spinner_, spacer, cancelButton_, convertButton_});
}

void OstraQuickActionProfileViewController::layOut(NSView& root, const Views& rows) {
  const auto stack = column(rows);
  root.addSubview(stack);
  NSView& profileRow = *rows[1];
  NSView& buttonRow = *rows[3];
  NSLayoutConstraint::activateConstraints({
      stack->leadingAnchor().constraintEqualToAnchor(root.leadingAnchor(), kSideMargin),
      stack->trailingAnchor().constraintEqualToAnchor(root.trailingAnchor(), -kSideMargin),
      stack->topAnchor().constraintEqualToAnchor(root.topAnchor(), kEndMargin),
      stack->bottomAnchor().constraintEqualToAnchor(root.bottomAnchor(), -kEndMargin),
      profileRow.trailingAnchor().constraintEqualToAnchor(stack->trailingAnchor()),
      buttonRow.trailingAnchor().constraintEqualToAnchor(stack->trailingAnchor()),
      popup_->trailingAnchor().constraintEqualToAnchor(profileRow.trailingAnchor()),
      summary_->widthAnchor().constraintEqualToAnchor(stack->widthAnchor()),
  });
}

void OstraQuickActionProfileViewController::connectButtons() {
  using Self = OstraQuickActionProfileViewController;
  const auto call = [weak = weak_from_this()](void (Self::*action)()) {
    return [weak, action] {
      if (const auto self = weak.lock()) (static_cast<Self&>(*self).*action)();
    };
  };
  cancelButton_->setAction(call(&Self::cancel));
  cancelButton_->setKeyEquivalent(kEscapeKey);
  convertButton_->setAction(call(&Self::convert));
  convertButton_->setKeyEquivalent(kReturnKey);
}

// The profiles.

void OstraQuickActionProfileViewController::viewDidLoad() {
  NSViewController::viewDidLoad();
  profiles_ = OstraColorProfileCatalog::builtIns();
  const std::size_t builtInCount = profiles_.size();
  std::vector<OstraColorProfile> installed = without(OstraColorProfileCatalog::installed(), profiles_);
  std::move(installed.begin(), installed.end(), std::back_inserter(profiles_));
  fillPopup(builtInCount);
  selectRememberedProfile();
}

void OstraQuickActionProfileViewController::fillPopup(std::size_t builtInCount) {
  popup_->removeAllItems();
  for (std::size_t i = 0; i < profiles_.size(); ++i) {
    if (i == builtInCount) popup_->addItem(NSMenuItem::separatorItem());
    popup_->addItem({profiles_[i].name, static_cast<int>(i), false});
  }
}

void OstraQuickActionProfileViewController::selectRememberedProfile() {
  const auto remembered = NSUserDefaults::standardUserDefaults().stringForKey(kLastProfileKey);
  const auto found =
      std::find_if(profiles_.begin(), profiles_.end(),
                   [&remembered](const OstraColorProfile& profile) { return profile.name == remembered; });
  popup_->selectItemWithTag(found != profiles_.end() ? static_cast<int>(found - profiles_.begin()) : 0);
}

const OstraColorProfile* OstraQuickActionProfileViewController::chosenProfile() const {
  const NSMenuItem* item = popup_->selectedItem();
  if (item == nullptr || item->tag < 0) return nullptr;
  const auto index = static_cast<std::size_t>(item->tag);
  return index < profiles_.size() ? &profiles_[index] : nullptr;
}

// The buttons.

void OstraQuickActionProfileViewController::convert() {
  if (!extensionContext()) return;
  const OstraColorProfile* profile = chosenProfile();
  if (profile == nullptr) return NSBeep();
  // Remembered first: it was the user's choice, whatever becomes of this request.
  NSUserDefaults::standardUserDefaults().setString(profile->name, kLastProfileKey);
  auto providers = collectProviders(extensionItems(*extensionContext()));
  if (providers.empty()) return extensionContext()->cancelRequestWithError(noImageError());
  disableControls();
  startEngine(std::move(providers), profile->space);
}

/// For good: the request ends when the conversion does.
void OstraQuickActionProfileViewController::disableControls() {
  convertButton_->setEnabled(false);
  cancelButton_->setEnabled(false);
  popup_->setEnabled(false);
  spinner_->startAnimation();
}

void OstraQuickActionProfileViewController::startEngine(
    std::vector<std::shared_ptr<NSItemProvider>> providers, const CGColorSpaceRef& space) {
  const auto engine = std::make_shared<OstraQuickActionEngine>(OstraQuickActionKind::convertColorProfile,
                                                               space, kLossyQuality);
  engine->run(std::move(providers),
              [weak = weak_from_this(), context = extensionContext(), title = std::string(kAlertTitle)](
                  const auto& /*outcomes*/, const auto& failures) {
                if (const auto self = weak.lock()) {
                  static_cast<OstraQuickActionProfileViewController&>(*self).spinner_->stopAnimation();
                }
                reportBatch(*context, failures, title);
              });
}

void OstraQuickActionProfileViewController::cancel() {
  if (extensionContext()) extensionContext()->cancelRequestWithError(userCancelled());
}

}  // namespace ostra
