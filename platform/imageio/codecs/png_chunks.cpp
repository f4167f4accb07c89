#include "platform/imageio/codecs/png_chunks.h"

#include <algorithm>

#include <zlib.h>

#include "platform/imageio/codecs/big_endian.h"

namespace ostra {
namespace {

constexpr std::size_t kChunkFrame = 12;  // length, type, checksum

bool allowsDepth(unsigned colourType, unsigned bits) {
  switch (colourType) {
    case 0:
      return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16;
    case 3:
      return bits == 1 || bits == 2 || bits == 4 || bits == 8;
    case 2:
    case 4:
    case 6:
      return bits == 8 || bits == 16;
    default:
      return false;
  }
}

bool isOfLetters(std::uint32_t type) {
  for (unsigned shift = 0; shift < 32; shift += 8) {
    const std::uint32_t letter = (type >> shift & 0xFF) | 0x20;
    if (letter < 'a' || letter > 'z') return false;
  }
  return true;
}

}  // namespace

bool PngChunk::isIntact() const {
  const ByteView covered = whole.subspan(4, whole.size() - 8);
  return crc32_z(0, covered.data(), covered.size()) == bigEndian32(whole, whole.size() - 4);
}

std::optional<PngChunk> PngChunkWalk::next() {
  if (rest_.size() < kChunkFrame) return std::nullopt;
  const std::size_t length = bigEndian32(rest_, 0);
  if (length > 0x7FFFFFFF || length > rest_.size() - kChunkFrame) return std::nullopt;
  PngChunk chunk;
  chunk.type = bigEndian32(rest_, 4);
  if (!isOfLetters(chunk.type)) return std::nullopt;
  chunk.whole = rest_.first(length + kChunkFrame);
  chunk.data = rest_.subspan(8, length);
  rest_ = rest_.subspan(chunk.whole.size());
  return chunk;
}

std::optional<PngHeader> readPngHeader(ByteView file) {
  if (file.size() < kPngSignature.size()) return std::nullopt;
  const auto chunk = PngChunkWalk(file).next();
  if (!chunk || chunk->type != pngType("IHDR") || chunk->data.size() != 13) return std::nullopt;
  PngHeader header;
  header.width = bigEndian32(chunk->data, 0);
  header.height = bigEndian32(chunk->data, 4);
  header.bits = chunk->data[8];
  header.colourType = chunk->data[9];
  header.interlaced = chunk->data[12] == 1;
  const auto isSide = [](std::uint32_t side) { return side > 0 && side <= 0x7FFFFFFF; };
  if (!isSide(header.width) || !isSide(header.height)) return std::nullopt;
  if (!allowsDepth(header.colourType, header.bits)) return std::nullopt;
  return header;
}

std::optional<PngStructure> readPngStructure(ByteView file, std::uint32_t maximumFrames) {
  const auto header = readPngHeader(file);
  if (!header) return std::nullopt;
  PngStructure structure;
  structure.header = *header;
  std::uint32_t claimed = 0, controls = 0;
  bool beforePixels = true;
  PngChunkWalk walk(file);
  while (const auto chunk = walk.next()) {
    if (chunk->type == pngType("IEND")) break;
    if (chunk->type == pngType("IDAT")) beforePixels = false;
    if (chunk->type == pngType("acTL") && beforePixels && chunk->data.size() == 8 && chunk->isIntact())
      claimed = bigEndian32(chunk->data, 0);
    if (chunk->type == pngType("fcTL")) ++controls;
    // An alpha channel leaves no meaning for a transparent colour.
    if (chunk->type == pngType("tRNS") && beforePixels && !header->hasAlphaChannel())
      structure.hasTransparency = true;
  }
  // Without its animation chunk a file is a still, whatever else lies in it; with it, frames that it does not
  // count are still pictures that a rewrite would lose.
  if (claimed > 0)
    structure.frames = std::clamp(std::max(claimed, controls), 1u, std::max(1u, maximumFrames));
  return structure;
}

}  // namespace ostra
