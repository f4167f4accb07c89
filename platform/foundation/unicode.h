#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace ostra {

/// Takes a character off the front of a text in UTF-8 that is not empty; nothing, and no change, where it
/// begins with no well-formed one (shortest form, no surrogate, at most U+10FFFF).
std::optional<char32_t> takeCharacter(std::string_view& utf8);

/// The characters of a text in UTF-8. Each byte that begins no well-formed character becomes U+FFFD.
std::u32string charactersOf(std::string_view utf8);

/// Puts a character, a Unicode scalar value, behind a text in UTF-8.
void appendCharacter(std::string& utf8, char32_t character);

}  // namespace ostra
