#pragma once
#include <string>
#include <string_view>

namespace ostra {

/// The characters of a text in UTF-8. Each byte that begins no well-formed character (shortest form, no
/// surrogate, at most U+10FFFF) becomes U+FFFD.
std::u32string charactersOf(std::string_view utf8);

/// Puts a character, a Unicode scalar value, behind a text in UTF-8.
void appendCharacter(std::string& utf8, char32_t character);

}  // namespace ostra
