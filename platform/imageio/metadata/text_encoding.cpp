#include "platform/imageio/metadata/text_encoding.h"

#include <algorithm>

#include "platform/foundation/unicode.h"

namespace ostra {

namespace {

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
  for (const char c : text) appendCharacter(result, static_cast<unsigned char>(c));
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
    appendCharacter(result, unit);
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
