#pragma once
#include <map>
#include <string>
#include <vector>

namespace ostra {

/// A text in English, and in other languages by their codes, such as "de" or "pt_BR".
struct MenuText {
  std::string plain;
  std::map<std::string, std::string> translations;
  bool operator==(const MenuText&) const = default;
};

/// What file managers show of one bundle.
struct MenuEntry {
  /// Of ASCII letters, digits and dashes; the bundle's folder name where it has nothing else.
  std::string identifier;
  MenuText name;
  MenuText tooltip;
  std::string icon;
  /// The folder that the entry's command names.
  std::string bundle;
};

/// The one submenu of the program: an entry for each bundle.
struct Menu {
  MenuText name;
  std::string icon;
  /// Of the pictures that it is offered for.
  std::vector<std::string> mimeTypes;
  std::vector<std::string> extensions;
  /// The executable that the entries' commands name.
  std::string program;
  /// In the order in which the program lists its actions.
  std::vector<MenuEntry> entries;
};

/// Where a menu is made from.
struct MenuSources {
  std::string program;
  /// The folder of the bundles, and the one that the entries name: another one where the menu is made before
  /// the bundles are installed.
  std::string bundles;
  std::string namedBundles;
  /// The folder of the templates, with what the menu itself is called.
  std::string templates;
};

/// Throws `UsageError` when the templates are not there, or no bundle is. Bundles that cannot be read are
/// reported on standard error and left out.
Menu readMenu(const MenuSources& sources);

}  // namespace ostra
