#pragma once
#include <string>
#include <string_view>

namespace ostra {

enum class NSComparisonResult { orderedAscending = -1, orderedSame = 0, orderedDescending = 1 };

/// Compares two texts (UTF-8) as the user's language orders them, letter case aside: by the collation of the
/// locale that the environment named when this was first called. Where that is the C locale or one that the
/// system does not have: blanks and punctuation, then digits, then letters. Numbers in the texts count digit
/// by digit. Any thread.
NSComparisonResult localizedCaseInsensitiveCompare(std::string_view a, std::string_view b);

/// `text` (UTF-8) in lower case, by Unicode's rules and not by those of the user's language: the same
/// everywhere.
std::string lowercased(std::string_view text);

}  // namespace ostra
