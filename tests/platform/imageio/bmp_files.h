#pragma once
#include <array>
#include <cstdint>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// What a bitmap file is made of; nothing of it need make sense.
struct BmpParts {
  std::uint32_t headerSize = 40;
  std::uint32_t width = 0;
  std::int32_t height = 0;
  unsigned bits = 24;
  std::uint32_t compression = 0;
  std::array<std::uint32_t, 4> masks{};
  std::uint32_t coloursUsed = 0;
  std::uint32_t density = 0;
  /// The fields of the newest headers from byte 56 on: the kind of space, primaries, gammas.
  std::uint32_t space = 0;
  std::array<std::uint32_t, 9> endpoints{};
  std::array<std::uint32_t, 3> gammas{};
  Bytes palette;  // as it lies in the file
  Bytes data;
  Bytes profile;  // behind the data
};

void appendLittle(Bytes& bytes, std::uint64_t value, int size);
/// With the masks behind a header of 40 bytes that needs them.
Bytes bitmapOf(const BmpParts& parts);
/// The same with the header of a file in front.
Bytes bmpFile(const BmpParts& parts);
/// What a row takes.
std::size_t bmpRowBytes(std::uint32_t width, unsigned bits);

}  // namespace ostra::test
