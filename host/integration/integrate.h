#pragma once
#include <string>

#include "host/integration/desktop_folders.h"
#include "host/integration/menu.h"

namespace ostra {

struct IntegrationOptions {
  /// Takes all away that was written before.
  bool remove = false;
  /// Tells what would be done, and does nothing.
  bool isRehearsal = false;
};

/// Puts the menu's entries where the installed file managers of a user look for them. Gives back what was
/// done, a line each; `status` becomes the exit status. Throws `UsageError`.
std::string integrate(const IntegrationOptions& options, const DesktopFolders& folders,
                      const MenuSources& sources, int& status);

/// The same for the user, the system and the program that run it: the command “ostra integrate”. The exit
/// status.
int integrate(const IntegrationOptions& options);

}  // namespace ostra
