#pragma once
#include <string>
#include <vector>

#include "host/integration/menu.h"

namespace ostra {

/// A file of a mechanism, by its name in the mechanism's folder.
struct MenuFile {
  std::string name;
  std::string text;
  bool isExecutable = false;
};

// One mechanism each. `templates` is the folder of the templates; a template that cannot be used is a
// `UsageError`.

/// What the extensions of file managers read: a key file.
MenuFile extensionMenuFile(const Menu& menu, const std::string& templates);
/// A service menu of KDE's file manager.
MenuFile serviceMenuFile(const Menu& menu, const std::string& templates);
/// Actions and the menu of them after the desktop entry extension for file managers' actions.
std::vector<MenuFile> fileManagerActionFiles(const Menu& menu, const std::string& templates);
/// Actions of Nemo, which sorts them by the names of their files.
std::vector<MenuFile> nemoActionFiles(const Menu& menu, const std::string& templates);
/// Scripts for the folders of scripts that Nautilus and Caja have, in a folder of their own. Names are in the
/// user's language.
std::vector<MenuFile> scriptFiles(const Menu& menu, const std::string& templates);
/// Elements of the list of custom actions that Thunar has, a text each.
std::vector<std::string> thunarActions(const Menu& menu, const std::string& templates);

}  // namespace ostra
