#pragma once
#include <cstddef>
#include <string>

#include "platform/appkit/terminal/ask.h"
#include "platform/appkit/view.h"

namespace ostra {

/// A view as questions: its texts, then for each of its pop-ups the items and a question, with what stands
/// before the pop-up as the prompt and the choice as the proposal. Answered to the end, the button whose key
/// is Return is pressed; a "q", an Escape, or no answer presses the one whose key is Escape. Lines are broken
/// at `columns` characters.
void askPanel(const std::shared_ptr<NSView>& root, const std::string& title, std::size_t columns,
              const Ask& ask);

}  // namespace ostra
