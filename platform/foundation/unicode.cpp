#include "platform/foundation/unicode.h"

namespace ostra {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// How many bytes a character has whose first byte is this; 0 for one that begins none.
std::size_t lengthAfter(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return lead < 0xF5 ? 4 : 0;
}

bool isScalar(char32_t character, std::size_t length) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  return character >= kSmallest[length] && !surrogate && character <= 0x10FFFF;
}

}  // namespace

std::optional<char32_t> takeCharacter(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lengthAfter(lead);
  if (length == 0 || length > text.size()) return std::nullopt;
  char32_t character = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    character = character << 6 | (next & 0x3F);
  }
  if (!isScalar(character, length)) return std::nullopt;
  text.remove_prefix(length);
  return character;
}

std::u32string charactersOf(std::string_view utf8) {
  std::u32string characters;
  characters.reserve(utf8.size());
  while (!utf8.empty()) {
    const auto character = takeCharacter(utf8);
    if (!character) utf8.remove_prefix(1);
    characters += character.value_or(kReplacement);
  }
  return characters;
}

void appendCharacter(std::string& utf8, char32_t character) {
  const auto lead = [&](char32_t mark, int shift) { utf8 += static_cast<char>(mark | character >> shift); };
  const auto follow = [&](int shift) { utf8 += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    lead(0, 0);
  } else if (character < 0x800) {
    lead(0xC0, 6), follow(0);
  } else if (character < 0x10000) {
    lead(0xE0, 12), follow(6), follow(0);
  } else {
    lead(0xF0, 18), follow(12), follow(6), follow(0);
  }
}

}  // namespace ostra
