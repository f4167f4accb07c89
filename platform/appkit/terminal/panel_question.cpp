#include "platform/appkit/terminal/panel_question.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/terminal/choice_question.h"
#include "platform/appkit/text_field.h"
#include "platform/appkit/view_search.h"
#include "platform/foundation/characters.h"

namespace ostra {
namespace {

/// The label directly before a view, beside which it stands; or null.
std::shared_ptr<NSTextField> labelOf(const NSView& view) {
  const std::shared_ptr<NSView> row = view.superview();
  if (!row) return nullptr;
  for (std::size_t i = 1; i < row->subviews().size(); ++i) {
    if (row->subviews()[i].get() == &view)
      return std::dynamic_pointer_cast<NSTextField>(row->subviews()[i - 1]);
  }
  return nullptr;
}

std::string brokenIntoLines(const std::string& text, std::size_t columns) {
  std::istringstream words(text);
  std::string lines;
  std::size_t filled = 0;
  for (std::string word; words >> word;) {
    const bool fits = filled + 1 + word.size() < columns;
    if (filled > 0) lines += fits ? ' ' : '\n';
    filled = (filled > 0 && fits ? filled + 1 : 0) + word.size();
    lines += word;
  }
  return lines + "\n";
}

/// The title and every text that is no pop-up's label and not the title once more.
std::string introduction(const std::shared_ptr<NSView>& root, const std::string& title, std::size_t columns) {
  std::set<std::shared_ptr<NSTextField>> labels;
  for (const auto& popup : viewsOfKind<NSPopUpButton>(root)) labels.insert(labelOf(*popup));
  std::string text = title + "\n";
  for (const auto& field : viewsOfKind<NSTextField>(root)) {
    if (labels.count(field) > 0 || field->stringValue() == title) continue;
    text += brokenIntoLines(field->stringValue(), columns);
  }
  return text;
}

std::string titleOfButton(const std::shared_ptr<NSView>& root, std::string_view key) {
  for (const auto& button : viewsOfKind<NSButton>(root)) {
    if (button->keyEquivalent() == key) return button->title();
  }
  return "";
}

std::string prompt(const NSPopUpButton& popup) {
  const auto label = labelOf(popup);
  const NSMenuItem* chosen = popup.selectedItem();
  std::string text = label ? label->stringValue() : "Choice:";
  if (chosen == nullptr) return text + " ";
  if (text.ends_with(':')) text.pop_back();
  return text + " [" + chosen->title + "]: ";
}

bool isCancel(std::string_view answer) { return answer == "q" || answer == "Q" || answer == kEscapeKey; }

/// Asks until something is chosen. False when the question was cancelled.
bool choose(NSPopUpButton& popup, std::string question, const Ask& ask) {
  for (;;) {
    const auto line = ask(question + prompt(popup));
    if (!line) return false;
    const std::string_view answer = trimWhitespaceAndNewlines(*line);
    if (isCancel(answer)) return false;
    if (answer.empty()) {
      if (popup.selectedItem() != nullptr) return true;
      question = "";
      continue;
    }
    const Meant meant = meantBy(answer, popup.items());
    if (meant.certain) return popup.selectItemWithTag(popup.items()[meant.positions.front()].tag);
    question = meant.positions.empty() ? "There is no “" + std::string(answer) + "” in the list.\n"
                                       : numberedList(popup.items(), meant.positions);
  }
}

bool answerAll(const std::shared_ptr<NSView>& root, std::string text, const Ask& ask) {
  const std::string cancel = titleOfButton(root, kEscapeKey);
  for (const auto& popup : viewsOfKind<NSPopUpButton>(root)) {
    if (!popup->isEnabled()) continue;
    text += numberedList(popup->items());
    text +=
        "Type a number or the beginning of a name" + (cancel.empty() ? "" : ", or q for “" + cancel + "”");
    if (!choose(*popup, text + ".\n", ask)) return false;
    text.clear();
  }
  return true;
}

}  // namespace

void askPanel(const std::shared_ptr<NSView>& root, const std::string& title, std::size_t columns,
              const Ask& ask) {
  const bool answered = answerAll(root, introduction(root, title, columns), ask);
  pressButtonWithKey(root, answered ? kReturnKey : kEscapeKey);
}

}  // namespace ostra
