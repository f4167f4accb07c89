#pragma once
#include <cstddef>
#include <cstdint>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Big-endian numbers; the caller has checked that the bytes are there.
inline std::uint16_t bigEndian16(ByteView bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}
inline std::uint32_t bigEndian32(ByteView bytes, std::size_t at) {
  return std::uint32_t{bigEndian16(bytes, at)} << 16 | bigEndian16(bytes, at + 2);
}
inline void appendBigEndian32(Bytes& bytes, std::uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace ostra
