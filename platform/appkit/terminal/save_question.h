#pragma once
#include <optional>

#include "platform/appkit/save_panel.h"
#include "platform/appkit/terminal/ask.h"

namespace ostra {

/// A save panel as questions. The answer is a file or a folder; relative ones count from the current folder,
/// and an empty one accepts the proposal. Nothing is replaced and no folder is made without a yes.
std::optional<URL> askWhereToSave(const NSSavePanel& panel, const Ask& ask);

}  // namespace ostra
