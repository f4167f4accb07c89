#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "desktop/extensions/served_types.h"

namespace ostra::menu {

/// One action, in the user's language.
struct Entry {
  std::string action = {};
  std::string title = {};
  std::string tooltip = {};
  std::string icon = {};
  std::string bundle = {};
};

/// The submenu that every file manager shows.
struct Menu {
  std::string title = {};
  std::string icon = {};
  std::string program = {};
  ServedTypes types = {};
  std::vector<Entry> entries = {};
};

/// Reads the description of the menu. None where there is nothing to show; a file that is there and makes no
/// sense is told of on standard error.
std::optional<Menu> readMenu(const std::string& path);

/// A text for a place where an underscore would mark a letter.
std::string withoutMnemonic(std::string_view text);

}  // namespace ostra::menu
