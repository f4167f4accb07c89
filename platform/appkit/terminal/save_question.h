#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/appkit/save_panel.h"

namespace ostra {

/// How a question is put: shows a text and gives back the line of the answer, or nothing when there is none
/// to come.
using Ask = std::function<std::optional<std::string>(const std::string& question)>;

/// A save panel as questions. The answer is a file or a folder; relative ones count from the current folder,
/// and an empty one accepts the proposal. Nothing is replaced and no folder is made without a yes.
std::optional<URL> askWhereToSave(const NSSavePanel& panel, const Ask& ask);

}  // namespace ostra
