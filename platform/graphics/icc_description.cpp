#include "platform/graphics/icc_description.h"

#include <algorithm>

namespace ostra {
namespace {

void appendUtf8(std::string& text, char32_t character) {
  const auto lead = [&](char32_t mark, int shift) { text += static_cast<char>(mark | character >> shift); };
  const auto follow = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
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

bool isHigh(char32_t unit) { return unit >> 10 == 0xD800 >> 10; }
bool isLow(char32_t unit) { return unit >> 10 == 0xDC00 >> 10; }

/// Up to the first NUL; halves of pairs that stand alone are left out.
std::string fromUtf16(ByteView units) {
  std::string text;
  for (std::size_t at = 0; at + 2 <= units.size(); at += 2) {
    const char32_t unit = iccUInt16(units, at);
    const char32_t next = at + 4 <= units.size() ? iccUInt16(units, at + 2) : 0;
    if (unit == 0) break;
    if (isHigh(unit) && isLow(next)) {
      appendUtf8(text, 0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF));
      at += 2;
    } else if (!isHigh(unit) && !isLow(unit)) {
      appendUtf8(text, unit);
    }
  }
  return text;
}

/// multiLocalizedUnicodeType: records of language, country, length and offset.
std::string ofLanguages(ByteView tag) {
  if (tag.size() < 16 || iccUInt32(tag, 12) != 12) return {};
  const std::size_t count = std::min<std::size_t>(iccUInt32(tag, 8), (tag.size() - 16) / 12);
  ByteView chosen;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t record = 16 + 12 * i;
    const std::size_t length = iccUInt32(tag, record + 4), offset = iccUInt32(tag, record + 8);
    if (offset > tag.size() || length > tag.size() - offset) continue;
    const bool english = iccUInt16(tag, record) == ('e' << 8 | 'n');
    if (chosen.empty() || english) chosen = tag.subspan(offset, length);
    if (english) break;
  }
  return fromUtf16(chosen);
}

/// textDescriptionType of version 2: the length of an ASCII text, then that. Bytes beyond ASCII count as
/// Latin-1.
std::string ofAscii(ByteView tag) {
  if (tag.size() < 12) return {};
  const std::size_t length = std::min<std::size_t>(iccUInt32(tag, 8), tag.size() - 12);
  std::string text;
  for (const std::uint8_t character : tag.subspan(12, length)) {
    if (character == 0) break;
    appendUtf8(text, character);
  }
  return text;
}

}  // namespace

std::string iccDescription(const CheckedProfile& profile) {
  const ByteView tag = profile.tag(iccSignature("desc"));
  if (tag.empty()) return {};
  if (iccUInt32(tag, 0) == iccSignature("mluc")) return ofLanguages(tag);
  return iccUInt32(tag, 0) == iccSignature("desc") ? ofAscii(tag) : std::string();
}

}  // namespace ostra
