#pragma once
#include <optional>

#include "host/extension_context.h"

namespace ostra {

inline constexpr int kCompletedStatus = 0;
inline constexpr int kFailedFilesStatus = 1;
inline constexpr int kUsageStatus = 2;
inline constexpr int kUserCancelledStatus = 130;

/// The program's exit status. A signal counts more than the end of the request; without either, which only
/// happens when the request was left unfinished, it is that of failed files.
int exitStatus(const std::optional<RequestEnd>& end, std::optional<int> signal);

/// The sentence that the host itself must print, because nobody else told the user; or nothing.
std::optional<std::string> hostMessage(const RequestEnd& end);

}  // namespace ostra
