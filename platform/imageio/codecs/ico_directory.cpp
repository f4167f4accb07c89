#include "platform/imageio/codecs/ico_directory.h"

#include <algorithm>
#include <tuple>

#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/png_chunks.h"

namespace ostra {
namespace {

std::optional<IcoEntry> readBitmap(ByteView bitmap) {
  auto header = readBmpHeader(bitmap);
  if (!header || header->height < 2 || header->topDown) return std::nullopt;
  // Run-length codes would not say where the mask begins.
  if (header->packing != BmpPacking::palette && header->packing != BmpPacking::masks) return std::nullopt;
  header->height /= 2;
  // The fourth byte is alpha, though the header has no mask for it.
  if (header->bits == 32 && header->packing == BmpPacking::masks && header->masks[3] == 0)
    header->masks[3] = 0xFF000000;
  const std::size_t dataAt = header->paletteAt + header->paletteEntries * header->paletteEntryBytes;
  BmpPicture colours{*header, readBmpPalette(bitmap, *header, dataAt), {}};
  colours.data = bitmap.subspan(std::min(dataAt, bitmap.size()));
  const std::uint64_t size = colours.rowBytes() * header->height;
  const ByteView mask = colours.data.subspan(std::min<std::uint64_t>(size, colours.data.size()));
  return IcoEntry{header->width, header->height, header->bits, IcoBitmap{std::move(colours), mask}};
}

std::optional<IcoEntry> readPng(ByteView file) {
  const auto header = readPngHeader(file);
  if (!header) return std::nullopt;
  return IcoEntry{header->width, header->height, 32, file};
}

std::optional<IcoEntry> readEntry(ByteView file, std::size_t at) {
  const std::size_t size = littleEndian32(file, at + 8), offset = littleEndian32(file, at + 12);
  if (offset > file.size() || size > file.size() - offset) return std::nullopt;
  const ByteView contents = file.subspan(offset, size);
  return matchesPng(contents) ? readPng(contents) : readBitmap(contents);
}

auto rankOf(const IcoEntry& entry) {
  return std::tuple(std::uint64_t{entry.width} * entry.height, entry.bits);
}

}  // namespace

bool beginsIco(ByteView head, IcoKind kind) {
  if (head.size() < kIcoDirectoryHead + kIcoEntrySize) return false;
  const std::uint32_t count = littleEndian16(head, 4);
  if (littleEndian16(head, 0) != 0 || littleEndian16(head, 2) != static_cast<unsigned>(kind) || count == 0)
    return false;
  const std::size_t entry = kIcoDirectoryHead;
  const bool unused = head[entry + 3] == 0 || head[entry + 3] == 255;  // some programs write all ones
  const bool bits = kind == IcoKind::cursor ||
                    (littleEndian16(head, entry + 4) <= 1 && littleEndian16(head, entry + 6) <= 32);
  return unused && bits && littleEndian32(head, entry + 8) != 0 &&
         littleEndian32(head, entry + 12) >= kIcoDirectoryHead + count * kIcoEntrySize;
}

std::uint32_t countOfIco(ByteView file) { return littleEndian16(file, 4); }

std::optional<IcoEntry> largestIcoEntry(ByteView file) {
  std::optional<IcoEntry> largest;
  for (std::uint32_t i = 0; i < countOfIco(file); ++i) {
    const std::size_t at = kIcoDirectoryHead + i * kIcoEntrySize;
    if (at + kIcoEntrySize > file.size()) break;
    auto entry = readEntry(file, at);
    if (entry && (!largest || rankOf(*entry) > rankOf(*largest))) largest = std::move(entry);
  }
  return largest;
}

}  // namespace ostra
