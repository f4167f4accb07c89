#pragma once
#include <string>
#include <string_view>

#include "platform/foundation/bytes.h"
#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {

/// Well-formed UTF-8: shortest forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);
bool isAscii(std::string_view text);
/// `text` itself when it is UTF-8, else each byte taken for the character of that number.
std::string utf8FromUnknown(std::string_view text);
std::string utf8FromLatin1(std::string_view text);
/// Unpaired surrogates become U+FFFD; an odd last byte is left out.
std::string utf8FromUtf16(ByteView text, ByteOrder order);
/// `text` must be UTF-8.
Bytes utf16FromUtf8(std::string_view text, ByteOrder order);

inline std::string_view asText(ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
inline ByteView asBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace ostra
