#include "platform/imageio/metadata/text_encoding.h"

#include <algorithm>
#include <optional>

namespace ostra {

namespace {

/// Takes one character off the front; nothing when it is malformed.
std::optional<char32_t> takeCharacter(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || length > text.size()) return std::nullopt;
  char32_t character = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    character = character << 6 | (next & 0x3F);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  if (character < kSmallest[length] || surrogate || character > 0x10FFFF) return std::nullopt;
  text.remove_prefix(length);
  return character;
}

void append(std::string& text, char32_t character) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    tail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    tail(6), tail(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    tail(12), tail(6), tail(0);
  }
}

void append16(Bytes& bytes, char32_t unit, ByteOrder order) {
  bytes.resize(bytes.size() + 2);
  write16(bytes, bytes.size() - 2, static_cast<std::uint16_t>(unit), order);
}

}  // namespace

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    if (!takeCharacter(text)) return false;
  }
  return true;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string utf8FromLatin1(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  std::string result;
  for (const char c : text) append(result, static_cast<unsigned char>(c));
  return result;
}

std::string utf8FromUnknown(std::string_view text) {
  return isUtf8(text) ? std::string(text) : utf8FromLatin1(text);
}

std::string utf8FromUtf16(ByteView text, ByteOrder order) {
  std::string result;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    char32_t unit = read16(text, i, order);
    const bool high = unit >= 0xD800 && unit < 0xDC00, low = unit >= 0xDC00 && unit < 0xE000;
    const char32_t next = high && i + 3 < text.size() ? read16(text, i + 2, order) : 0;
    if (next >= 0xDC00 && next < 0xE000) {
      unit = 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
      i += 2;
    } else if (high || low) {
      unit = 0xFFFD;
    }
    append(result, unit);
  }
  return result;
}

Bytes utf16FromUtf8(std::string_view text, ByteOrder order) {
  Bytes result;
  while (!text.empty()) {
    const auto character = takeCharacter(text);
    if (!character) break;
    if (*character < 0x10000) {
      append16(result, *character, order);
    } else {
      append16(result, 0xD800 + ((*character - 0x10000) >> 10), order);
      append16(result, 0xDC00 + ((*character - 0x10000) & 0x3FF), order);
    }
  }
  return result;
}

}  // namespace ostra
