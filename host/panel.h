#pragma once
#include <memory>
#include <string>

#include "platform/appkit/view_controller.h"

namespace ostra {

/// Shows the panel of a request that has begun, or puts its questions. When nobody can be asked, cancels the
/// request and throws `UsageError`; after a signal does nothing.
void showPanel(const std::shared_ptr<NSViewController>& controller, const std::string& title);

/// Answers the panel of a request that has begun, as a user would who chooses a name in its pop-up and
/// presses Return: the item of exactly this title, else the only one whose title is the same letter case
/// aside. When there is none, presses Escape and throws `UsageError` with names that are near.
void answerPanel(const std::shared_ptr<NSViewController>& controller, const std::string& name);

/// The titles in the pop-ups of a panel, a line each, an empty line for a separator.
std::string panelChoices(const std::shared_ptr<NSViewController>& controller);

}  // namespace ostra
