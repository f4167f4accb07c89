#pragma once
#include <functional>
#include <optional>
#include <string>

namespace ostra {

/// How a question is put: shows a text and gives back the line of the answer, or nothing when there is none
/// to come.
using Ask = std::function<std::optional<std::string>(const std::string& question)>;

}  // namespace ostra
