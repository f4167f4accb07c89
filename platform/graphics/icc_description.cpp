#include "platform/graphics/icc_description.h"

#include <algorithm>

#include "platform/graphics/icc_text.h"

namespace ostra {
namespace {

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
  return iccUtf16Text(chosen);
}

/// textDescriptionType of version 2: the length of an ASCII text, then that.
std::string ofAscii(ByteView tag) {
  if (tag.size() < 12) return {};
  const std::size_t length = std::min<std::size_t>(iccUInt32(tag, 8), tag.size() - 12);
  return iccAsciiText(tag.subspan(12, length));
}

}  // namespace

std::string iccDescription(const CheckedProfile& profile) {
  const ByteView tag = profile.tag(iccSignature("desc"));
  if (tag.empty()) return {};
  if (iccUInt32(tag, 0) == iccSignature("mluc")) return ofLanguages(tag);
  return iccUInt32(tag, 0) == iccSignature("desc") ? ofAscii(tag) : std::string();
}

}  // namespace ostra
