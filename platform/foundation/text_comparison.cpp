#include "platform/foundation/text_comparison.h"

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <cwctype>
#include <optional>
#include <utility>

#include "platform/foundation/unicode.h"
#include "platform/foundation/user_languages.h"

// The C library's tables: making the two locales below takes a tenth of a millisecond, and a request that
// compares nothing pays nothing.

namespace ostra {
namespace {

static_assert(sizeof(wchar_t) == sizeof(char32_t), "the C library's wide characters are Unicode's");

/// The C library's knowledge of Unicode without any language's habits; null where it is not installed, and
/// then only ASCII has lower case.
locale_t unicodeLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

char32_t lowered(char32_t character) {
  if (character < 0x80) return character >= 'A' && character <= 'Z' ? character + 'a' - 'A' : character;
  const locale_t locale = unicodeLocale();
  return locale == nullptr ? character
                           : static_cast<char32_t>(towlower_l(static_cast<wint_t>(character), locale));
}

bool isLetter(char32_t character) {
  const locale_t locale = unicodeLocale();
  return locale != nullptr && iswalpha_l(static_cast<wint_t>(character), locale) != 0;
}

/// A capital sigma that ends a word has a lower-case letter of its own.
bool isFinalSigma(const std::u32string& text, std::size_t at) {
  const bool follows = at > 0 && isLetter(text[at - 1]);
  const bool goesOn = at + 1 < text.size() && isLetter(text[at + 1]);
  return text[at] == U'Σ' && follows && !goesOn;
}

std::u32string loweredCharacters(std::string_view utf8) {
  const std::u32string text = charactersOf(utf8);
  std::u32string lower;
  lower.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == U'İ') {
      lower += U"i\u0307";  // the one letter whose lower case is two characters
    } else {
      lower += isFinalSigma(text, i) ? U'ς' : lowered(text[i]);
    }
  }
  return lower;
}

/// Null where the plain rules count.
locale_t collation() {
  static const locale_t locale = [] {
    const std::string name = localeNameFor("LC_COLLATE");
    return isPlainLocale(name) ? nullptr : newlocale(LC_COLLATE_MASK | LC_CTYPE_MASK, name.c_str(), nullptr);
  }();
  return locale;
}

bool isDigit(char32_t character) { return character >= '0' && character <= '9'; }

bool isSmallLetter(char32_t character) { return character >= 'a' && character <= 'z'; }

constexpr std::u32string_view kMarks = U" _-,;:!?.'\"()[]{}@*/\\&#%`^+<=>|~$";

/// Where a blank or a punctuation mark stands among its like; nothing for every other character. Marks that
/// combine with letters are no punctuation.
std::optional<char32_t> rankOfMark(char32_t character) {
  if (isSmallLetter(character) || isDigit(character)) return std::nullopt;
  const std::size_t known = kMarks.find(character);
  if (known != std::u32string_view::npos) return static_cast<char32_t>(known);
  const bool control = character < 0x20 || character == 0x7F;
  if (control) return char32_t{0};
  const bool latin = character >= 0x80 && character < 0xC0 && !isLetter(character);
  const bool general = (character >= 0x2000 && character < 0x2070) || (character & ~0x3Fu) == 0x3000;
  return latin || general ? std::optional(character) : std::nullopt;
}

/// The C library leaves blanks and punctuation out of account, but it orders digits before letters. So marks
/// and digits are written as digits that keep their order: a mark as 0 and eight more, a digit as 1 and
/// itself.
std::wstring collatable(const std::u32string& text) {
  std::wstring result;
  for (const char32_t character : text) {
    if (const auto rank = rankOfMark(character)) {
      result += L'0';
      result += std::to_wstring(10'000'000 + *rank);
    } else {
      if (isDigit(character)) result += L'1';
      result += static_cast<wchar_t>(character);
    }
  }
  return result;
}

/// Blanks and punctuation, digits, letters.
std::pair<int, char32_t> plainRank(char32_t character) {
  if (const auto rank = rankOfMark(character)) return {0, *rank};
  return {isDigit(character) ? 1 : 2, character};
}

int compareByPlainRules(const std::u32string& a, const std::u32string& b) {
  const auto before = [](char32_t one, char32_t other) { return plainRank(one) < plainRank(other); };
  if (std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), before)) return -1;
  return std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end(), before) ? 1 : 0;
}

}  // namespace

NSComparisonResult localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
  const std::u32string lowerA = loweredCharacters(a), lowerB = loweredCharacters(b);
  const locale_t language = collation();
  const int order = language != nullptr
                        ? wcscoll_l(collatable(lowerA).c_str(), collatable(lowerB).c_str(), language)
                        : compareByPlainRules(lowerA, lowerB);
  if (order == 0) return NSComparisonResult::orderedSame;
  return order < 0 ? NSComparisonResult::orderedAscending : NSComparisonResult::orderedDescending;
}

std::string lowercased(std::string_view text) {
  std::string lower;
  lower.reserve(text.size());
  for (const char32_t character : loweredCharacters(text)) appendCharacter(lower, character);
  return lower;
}

}  // namespace ostra
