#pragma once
#include <exception>
#include <string>

#include "front/kind.h"
#include "platform/foundation/error.h"

namespace ostra {

/// The engine's log has three kinds of lines, and these are they. A line is put together only when its level
/// is on.

/// A file was written: at `info`.
void logWritten(OstraQuickActionKind kind, const std::string& destinationName, bool inPlace);
/// The conversion of a file failed: at `error`.
void logFailure(OstraQuickActionKind kind, const std::exception_ptr& failure);
/// A place beside the source was refused, and the user is about to be asked: at `error`.
void logRefusal(OstraQuickActionKind kind, const NSError& refusal);

}  // namespace ostra
