#pragma once
#include <string>
#include <string_view>

namespace ostra {

/// `text` as it may be shown on a terminal: every control character (C0 but for the line feed, DEL, and the
/// C1 range in UTF-8) becomes a question mark. A file's name must not move the cursor or retitle the window.
std::string printable(std::string_view text);
/// The same for a text that has to stay on one line: line feeds too.
std::string printableLine(std::string_view text);

}  // namespace ostra
