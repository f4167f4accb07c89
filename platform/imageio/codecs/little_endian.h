#pragma once
#include <cstddef>
#include <cstdint>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Little-endian numbers; the caller has checked that the bytes are there.
inline std::uint16_t littleEndian16(ByteView bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}
inline std::uint32_t littleEndian32(ByteView bytes, std::size_t at) {
  return littleEndian16(bytes, at) | std::uint32_t{littleEndian16(bytes, at + 2)} << 16;
}
inline void appendLittleEndian16(Bytes& bytes, std::uint32_t value) {
  for (const int shift : {0, 8}) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}
inline void appendLittleEndian32(Bytes& bytes, std::uint32_t value) {
  for (const int shift : {0, 8, 16, 24}) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace ostra
