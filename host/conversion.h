#pragma once
#include "host/command_line.h"

namespace ostra {

/// Performs an action on files, from the command line to the exit status. Throws `UsageError`.
int performAction(const CommandLine& line);

}  // namespace ostra
