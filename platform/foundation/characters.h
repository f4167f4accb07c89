#pragma once
#include <string_view>

namespace ostra {

/// `text` (UTF-8) without the Unicode white space and newlines at both ends: U+0009 to U+000D, U+0020,
/// U+0085, U+00A0, U+1680, U+2000 to U+200B, U+2028, U+2029, U+202F, U+205F, U+3000.
std::string_view trimWhitespaceAndNewlines(std::string_view text);

}  // namespace ostra
