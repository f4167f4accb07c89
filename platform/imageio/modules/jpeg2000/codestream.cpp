#include "platform/imageio/modules/jpeg2000/codestream.h"

#include <algorithm>

#include "platform/imageio/codecs/big_endian.h"

namespace ostra {
namespace {

constexpr unsigned kStart = 0xFF4F, kSize = 0xFF51, kComment = 0xFF64, kTilePart = 0xFF90, kEnd = 0xFFD9;

std::uint32_t dividedUp(std::uint32_t number, std::uint32_t by) {
  return static_cast<std::uint32_t>((std::uint64_t{number} + by - 1) / by);
}

struct Grid {
  std::uint32_t x1, y1, x0, y0;
  std::uint32_t tileWidth, tileHeight, tileX0, tileY0;

  explicit Grid(ByteView size)
      : x1(bigEndian32(size, 4)),
        y1(bigEndian32(size, 8)),
        x0(bigEndian32(size, 12)),
        y0(bigEndian32(size, 16)),
        tileWidth(bigEndian32(size, 20)),
        tileHeight(bigEndian32(size, 24)),
        tileX0(bigEndian32(size, 28)),
        tileY0(bigEndian32(size, 32)) {}

  bool isSound() const {
    return x0 < x1 && y0 < y1 && tileWidth > 0 && tileHeight > 0 && tileX0 <= x0 && tileY0 <= y0 &&
           std::uint64_t{tileX0} + tileWidth > x0 && std::uint64_t{tileY0} + tileHeight > y0;
  }
  std::uint64_t tiles() const {
    return std::uint64_t{dividedUp(x1 - tileX0, tileWidth)} * dividedUp(y1 - tileY0, tileHeight);
  }
};

// The contents of the marker segment, its length first.
bool readSize(ByteView size, Codestream& codestream) {
  constexpr std::size_t kFixed = 38, kForEach = 3;
  constexpr std::uint64_t kMostTiles = 65535;
  if (size.size() < kFixed) return false;
  const Grid grid(size);
  const std::size_t count = bigEndian16(size, 36);
  if (!grid.isSound() || grid.tiles() > kMostTiles || count == 0) return false;
  if (size.size() != kFixed + kForEach * count) return false;
  codestream.width = grid.x1 - grid.x0;
  codestream.height = grid.y1 - grid.y0;
  codestream.tiles = static_cast<std::uint32_t>(grid.tiles());
  for (std::size_t at = kFixed; at < size.size(); at += kForEach) {
    J2kComponent component;
    component.bits = (size[at] & 0x7Fu) + 1;
    component.isSigned = (size[at] & 0x80) != 0;
    component.dx = size[at + 1];
    component.dy = size[at + 2];
    if (component.dx == 0 || component.dy == 0) return false;
    component.left = dividedUp(grid.x0, component.dx);
    component.top = dividedUp(grid.y0, component.dy);
    component.width = dividedUp(grid.x1, component.dx) - component.left;
    component.height = dividedUp(grid.y1, component.dy) - component.top;
    if (component.width == 0 || component.height == 0) return false;
    codestream.components.push_back(component);
  }
  return true;
}

void keepComment(ByteView segment, Codestream& codestream) {
  constexpr unsigned kText = 1;
  if (segment.size() > 4 && bigEndian16(segment, 2) == kText)
    codestream.comments.push_back(segment.subspan(4));
}

// Where the first tile part begins; nothing when the header is malformed.
std::optional<std::size_t> readMainHeader(ByteView bytes, Codestream& codestream) {
  constexpr std::size_t kFirst = 2;
  if (bytes.size() < kFirst + 4 || bigEndian16(bytes, 0) != kStart || bigEndian16(bytes, 2) != kSize)
    return std::nullopt;
  for (std::size_t at = kFirst; at + 4 <= bytes.size();) {
    const unsigned marker = bigEndian16(bytes, at);
    if (marker == kTilePart) return at;
    const std::size_t length = bigEndian16(bytes, at + 2);
    if (marker < 0xFF00 || length < 2 || length > bytes.size() - at - 2) return std::nullopt;
    const ByteView segment = bytes.subspan(at + 2, length);
    if (marker == kSize && (at != kFirst || !readSize(segment, codestream))) return std::nullopt;
    if (marker == kComment) keepComment(segment, codestream);
    at += 2 + length;
  }
  return std::nullopt;
}

/// Counts the parts of each tile.
class TileParts {
 public:
  explicit TileParts(std::uint32_t tiles) : seen_(tiles), told_(tiles) {}

  bool add(unsigned tile, unsigned toldCount) {
    if (tile >= seen_.size()) return false;
    ++seen_[tile];
    told_[tile] = std::max(told_[tile], toldCount);
    return true;
  }
  bool areAllThere() const {
    for (std::size_t i = 0; i < seen_.size(); ++i) {
      if (seen_[i] == 0 || seen_[i] < told_[i]) return false;
    }
    return true;
  }

 private:
  std::vector<unsigned> seen_, told_;
};

// Where the codestream ends; nothing when that is not where its last tile part does.
std::optional<std::size_t> endOfTileParts(ByteView bytes, std::size_t at, TileParts& parts) {
  constexpr std::size_t kShortest = 14;
  while (at + 2 <= bytes.size()) {
    if (bigEndian16(bytes, at) == kEnd) return at + 2;
    if (bytes.size() - at < kShortest || bigEndian16(bytes, at) != kTilePart) return std::nullopt;
    std::size_t length = bigEndian32(bytes, at + 6);
    // The last one may leave it open.
    if (length == 0) length = bytes.size() - at - 2;
    if (length < kShortest || length > bytes.size() - at) return std::nullopt;
    if (!parts.add(bigEndian16(bytes, at + 4), bytes[at + 11])) return std::nullopt;
    at += length;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Codestream> readCodestream(ByteView bytes) {
  Codestream codestream;
  const auto first = readMainHeader(bytes, codestream);
  if (!first) return std::nullopt;
  TileParts parts(codestream.tiles);
  const auto end = endOfTileParts(bytes, *first, parts);
  if (!end || !parts.areAllThere()) return std::nullopt;
  codestream.bytes = bytes.first(*end);
  return codestream;
}

}  // namespace ostra
