#include "tests/platform/imageio/bmp_files.h"

namespace ostra::test {
namespace {

bool hasMasksBehind(const BmpParts& parts) {
  return parts.headerSize == 40 && (parts.compression == 3 || parts.compression == 6);
}

std::uint32_t dataPosition(const BmpParts& parts) {
  const std::uint32_t masks = hasMasksBehind(parts) ? (parts.compression == 6 ? 16 : 12) : 0;
  return parts.headerSize + masks + static_cast<std::uint32_t>(parts.palette.size());
}

Bytes header(const BmpParts& parts) {
  Bytes bytes;
  appendLittle(bytes, parts.headerSize, 4);
  const int side = parts.headerSize == 12 ? 2 : 4;
  appendLittle(bytes, parts.width, side);
  appendLittle(bytes, static_cast<std::uint32_t>(parts.height), side);
  appendLittle(bytes, 1, 2);
  appendLittle(bytes, parts.bits, 2);
  if (parts.headerSize == 12) return bytes;
  const auto size = static_cast<std::uint32_t>(parts.data.size());
  for (const std::uint32_t field :
       {parts.compression, size, parts.density, parts.density, parts.coloursUsed, 0U})
    appendLittle(bytes, field, 4);
  if (parts.headerSize > 40) {
    for (const std::uint32_t mask : parts.masks) appendLittle(bytes, mask, 4);
    appendLittle(bytes, parts.space, 4);
    for (const std::uint32_t number : parts.endpoints) appendLittle(bytes, number, 4);
    for (const std::uint32_t gamma : parts.gammas) appendLittle(bytes, gamma, 4);
    for (const std::uint32_t field :
         {4U, dataPosition(parts) + size, static_cast<std::uint32_t>(parts.profile.size()), 0U})
      appendLittle(bytes, field, 4);
  }
  bytes.resize(parts.headerSize);
  return bytes;
}

}  // namespace

void appendLittle(Bytes& bytes, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

std::size_t bmpRowBytes(std::uint32_t width, unsigned bits) {
  return (std::size_t{width} * bits + 31) / 32 * 4;
}

Bytes bitmapOf(const BmpParts& parts) {
  Bytes bytes = header(parts);
  for (std::size_t i = 0; hasMasksBehind(parts) && i < (parts.compression == 6 ? 4 : 3); ++i)
    appendLittle(bytes, parts.masks[i], 4);
  for (const Bytes* part : {&parts.palette, &parts.data, &parts.profile})
    bytes.insert(bytes.end(), part->begin(), part->end());
  return bytes;
}

Bytes bmpFile(const BmpParts& parts) {
  const Bytes bitmap = bitmapOf(parts);
  Bytes file = {'B', 'M'};
  appendLittle(file, bitmap.size() + 14, 4);
  appendLittle(file, 0, 4);
  appendLittle(file, 14 + dataPosition(parts), 4);
  file.insert(file.end(), bitmap.begin(), bitmap.end());
  return file;
}

}  // namespace ostra::test
