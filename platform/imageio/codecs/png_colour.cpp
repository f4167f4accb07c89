#include "platform/imageio/codecs/png_colour.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/inflate.h"

namespace ostra {
namespace {

// BT.709's, which are sRGB's.
constexpr std::array<double, 2> kWhiteD65 = {0.3127, 0.3290};
constexpr std::array<double, 6> kPrimariesSRGB = {0.64, 0.33, 0.30, 0.60, 0.15, 0.06};

struct ColourChunks {
  ByteView cicp, iccp, srgb, gama, chrm;
};

ColourChunks findColourChunks(ByteView file) {
  ColourChunks found;
  const auto keep = [](ByteView& slot, const PngChunk& chunk, std::size_t minimum) {
    if (slot.empty() && chunk.data.size() >= minimum && chunk.isIntact()) slot = chunk.data;
  };
  PngChunkWalk walk(file);
  while (const auto chunk = walk.next()) {
    if (chunk->type == pngType("IDAT")) break;
    if (chunk->type == pngType("cICP")) keep(found.cicp, *chunk, 4);
    if (chunk->type == pngType("iCCP")) keep(found.iccp, *chunk, 4);
    if (chunk->type == pngType("sRGB")) keep(found.srgb, *chunk, 1);
    if (chunk->type == pngType("gAMA")) keep(found.gama, *chunk, 4);
    if (chunk->type == pngType("cHRM")) keep(found.chrm, *chunk, 32);
  }
  return found;
}

// ITU-T H.273: primaries and transfer function of full-range RGB.
std::optional<ProfileRecord> fromCodePoints(ByteView chunk) {
  if (chunk.empty() || chunk[2] != 0 || chunk[3] != 1) return std::nullopt;
  struct Row {
    int primaries, transfer;
    std::string_view space;
  };
  constexpr std::array kRows = {
      Row{1, 13, kCGColorSpaceSRGB},       Row{1, 8, kCGColorSpaceLinearSRGB},
      Row{12, 13, kCGColorSpaceDisplayP3}, Row{9, 1, kCGColorSpaceITUR_2020},
      Row{9, 14, kCGColorSpaceITUR_2020},  Row{9, 15, kCGColorSpaceITUR_2020},
  };
  const auto row = std::find_if(kRows.begin(), kRows.end(), [&](const Row& r) {
    return r.primaries == chunk[0] && r.transfer == chunk[1];
  });
  if (row == kRows.end()) return std::nullopt;
  return NamedSpace{std::string(row->space)};
}

// A name, a NUL, the method 0, a compressed profile.
std::optional<ProfileRecord> fromProfile(ByteView chunk, std::size_t limit) {
  const auto nameEnd = std::find(chunk.begin(), chunk.end(), 0);
  const auto position = static_cast<std::size_t>(nameEnd - chunk.begin());
  if (chunk.size() < position + 2 || chunk[position + 1] != 0) return std::nullopt;
  auto profile = inflateAll(chunk.subspan(position + 2), limit);
  if (!profile) return std::nullopt;
  return IccProfile{std::move(*profile)};
}

// The number in the chunk is the exponent from light to stored value, in 1/100000. Chromaticities alone say
// nothing about the curve, so they do not count; gamma alone means sRGB's primaries.
std::optional<ProfileRecord> fromGamma(ByteView gama, ByteView chrm, bool gray) {
  const std::uint32_t exponent = gama.empty() ? 0 : bigEndian32(gama, 0);
  if (exponent == 0) return std::nullopt;
  Calibrated space{kWhiteD65, kPrimariesSRGB, 100000.0 / exponent};
  if (!chrm.empty()) {
    const auto number = [&](std::size_t i) { return bigEndian32(chrm, 4 * i) / 100000.0; };
    space.white = {number(0), number(1)};
    for (std::size_t i = 0; i < 6; ++i) (*space.primaries)[i] = number(2 + i);
  }
  if (gray) space.primaries.reset();
  return space;
}

}  // namespace

ProfileRecord readPngColour(ByteView file, const PngHeader& header, const Limits& limits) {
  const ColourChunks chunks = findColourChunks(file);
  if (auto named = fromCodePoints(chunks.cicp); named && !header.isGray()) return *named;
  if (auto profile = fromProfile(chunks.iccp, limits.profileBytes)) return std::move(*profile);
  if (!chunks.srgb.empty()) return NamedSpace{std::string(kCGColorSpaceSRGB)};
  return fromGamma(chunks.gama, chunks.chrm, header.isGray()).value_or(Untagged{});
}

}  // namespace ostra
