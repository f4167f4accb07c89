#pragma once
#include <string>
#include <string_view>

namespace ostra::gtk {

/// `text` as a widget may show it: valid UTF-8, without control characters.
std::string shownText(std::string_view text);

}  // namespace ostra::gtk
