#include "platform/graphics/icc_text.h"

#include "platform/foundation/unicode.h"
#include "platform/graphics/icc_check.h"

namespace ostra {
namespace {

bool isHigh(char32_t unit) { return unit >> 10 == 0xD800 >> 10; }
bool isLow(char32_t unit) { return unit >> 10 == 0xDC00 >> 10; }

}  // namespace

std::string iccUtf16Text(ByteView units) {
  std::string text;
  for (std::size_t at = 0; at + 2 <= units.size(); at += 2) {
    const char32_t unit = iccUInt16(units, at);
    const char32_t next = at + 4 <= units.size() ? iccUInt16(units, at + 2) : 0;
    if (unit == 0) break;
    if (isHigh(unit) && isLow(next)) {
      appendCharacter(text, 0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF));
      at += 2;
    } else if (!isHigh(unit) && !isLow(unit)) {
      appendCharacter(text, unit);
    }
  }
  return text;
}

std::string iccAsciiText(ByteView bytes) {
  std::string text;
  for (const std::uint8_t character : bytes) {
    if (character == 0) break;
    appendCharacter(text, character);
  }
  return text;
}

}  // namespace ostra
