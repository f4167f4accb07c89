#include "host/panel.h"

#include <algorithm>
#include <optional>

#include "host/near_names.h"
#include "host/stop_signals.h"
#include "host/usage_error.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/renderer.h"
#include "platform/appkit/view_search.h"
#include "platform/foundation/service.h"
#include "platform/foundation/text_comparison.h"

namespace ostra {
namespace {

constexpr std::size_t kMostNearNames = 5;

std::vector<std::string> titlesOf(const NSPopUpButton& popup) {
  std::vector<std::string> titles;
  for (const NSMenuItem& item : popup.items()) {
    if (!item.isSeparator) titles.push_back(item.title);
  }
  return titles;
}

template <class Fits>
std::vector<int> tagsWhere(const NSPopUpButton& popup, const Fits& fits) {
  std::vector<int> tags;
  for (const NSMenuItem& item : popup.items()) {
    if (!item.isSeparator && fits(item.title)) tags.push_back(item.tag);
  }
  return tags;
}

std::optional<int> tagOf(const NSPopUpButton& popup, const std::string& name) {
  const auto same = tagsWhere(popup, [&name](const std::string& title) { return title == name; });
  if (!same.empty()) return same.front();
  const std::string lower = lowercased(name);
  const auto alike =
      tagsWhere(popup, [&lower](const std::string& title) { return lowercased(title) == lower; });
  return alike.size() == 1 ? std::optional(alike.front()) : std::nullopt;
}

std::string unknownName(const NSPopUpButton& popup, const std::string& name) {
  std::string sentence = "There is no profile “" + name + "”.";
  const char* before = " Near it: “";
  for (const std::string& near : nearNames(name, titlesOf(popup), kMostNearNames)) {
    sentence += before + near;
    before = "”, “";
  }
  if (*before != ' ') sentence += "”.";
  return sentence + " See “ostra profiles”.";
}

}  // namespace

void showPanel(const std::shared_ptr<NSViewController>& controller, const std::string& title) {
  if (Service<Renderer>::current().present(controller, title) || StopSignals::received()) return;
  // Not by its Escape button: to describe the panel for that would read every profile.
  controller->extensionContext()->cancelRequestWithError(NSError(NSCocoaErrorDomain, NSUserCancelledError));
  throw UsageError(
      "Nobody can be asked for the profile here. Name it with “--profile NAME”; “ostra profiles” lists the "
      "names.");
}

void answerPanel(const std::shared_ptr<NSViewController>& controller, const std::string& name) {
  const std::shared_ptr<NSView>& view = controller->view();
  const auto popups = viewsOfKind<NSPopUpButton>(view);
  if (popups.empty()) throw UsageError("The panel of this bundle asks for no profile.");
  NSPopUpButton& popup = *popups.front();
  const auto tag = tagOf(popup, name);
  if (!tag) {
    pressButtonWithKey(view, kEscapeKey);
    throw UsageError(unknownName(popup, name));
  }
  popup.selectItemWithTag(*tag);
  pressButtonWithKey(view, kReturnKey);
}

std::string panelChoices(const std::shared_ptr<NSViewController>& controller) {
  std::string lines;
  for (const auto& popup : viewsOfKind<NSPopUpButton>(controller->view())) {
    for (const NSMenuItem& item : popup->items()) lines += item.title + "\n";  // a separator's is empty
  }
  return lines;
}

}  // namespace ostra
