#pragma once
#include "host/command_line.h"

namespace ostra {

/// Performs an action on files, from the command line to the exit status. Throws `UsageError`.
int performAction(const CommandLine& line);

/// Prints the names that the panel of the profile conversion offers. The exit status.
int listProfiles();

}  // namespace ostra
