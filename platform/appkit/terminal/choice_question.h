#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/appkit/pop_up_button.h"

namespace ostra {

/// The titles of a pop-up as a numbered list, a line each, and a dashed line for a separator. Numbers count
/// from 1 and leave separators out.
std::string numberedList(const std::vector<NSMenuItem>& items);
/// The same list, with the same numbers, of some of the positions.
std::string numberedList(const std::vector<NSMenuItem>& items, const std::vector<std::size_t>& positions);

/// The positions that an answer may mean: that of a number, else of the same title, else of titles that are
/// the same letter case aside, else of those that begin so, else of those that hold it. Certain when it is
/// one and the answer is its number, its title or its beginning.
struct Meant {
  std::vector<std::size_t> positions;
  bool certain = false;
};
Meant meantBy(std::string_view answer, const std::vector<NSMenuItem>& items);

}  // namespace ostra
