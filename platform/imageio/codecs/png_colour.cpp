#include "platform/imageio/codecs/png_colour.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/graphics/code_points.h"
#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/inflate.h"
#include "platform/imageio/profile_space.h"

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

// Primaries, transfer function, the matrix 0 and the full range: PNG has no other.
ProfileRecord fromCodePoints(ByteView chunk, CGColorSpaceModel model) {
  if (chunk.empty() || chunk[2] != 0 || chunk[3] != 1) return Untagged{};
  return profileOfSpace(spaceOfCodePoints(chunk[0], chunk[1], model));
}

// A name, a NUL, the method 0, a compressed profile.
ProfileRecord fromProfile(ByteView chunk, std::size_t limit) {
  const auto nameEnd = std::find(chunk.begin(), chunk.end(), 0);
  const auto position = static_cast<std::size_t>(nameEnd - chunk.begin());
  if (chunk.size() < position + 2 || chunk[position + 1] != 0) return Untagged{};
  auto profile = inflateAll(chunk.subspan(position + 2), limit, LimitName::profileBytes);
  if (!profile) return Untagged{};
  return IccProfile{std::move(*profile)};
}

ProfileRecord fromMark(ByteView srgb) {
  if (srgb.empty()) return Untagged{};
  return NamedSpace{std::string(kCGColorSpaceSRGB)};
}

// The number in the chunk is the exponent from light to stored value, in 1/100000. Chromaticities alone say
// nothing about the curve, so they do not count; gamma alone means sRGB's primaries.
ProfileRecord fromGamma(ByteView gama, ByteView chrm, bool gray) {
  const std::uint32_t exponent = gama.empty() ? 0 : bigEndian32(gama, 0);
  if (exponent == 0) return Untagged{};
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
  const bool gray = header.isGray();
  const auto fits = [&](const ProfileRecord& record) {
    return statedSpace(record, header.model()) != nullptr;
  };
  ProfileRecord profile = fromProfile(chunks.iccp, limits.profileBytes);
  if (std::holds_alternative<IccProfile>(profile)) return fits(profile) ? profile : Untagged{};
  for (auto record : {fromCodePoints(chunks.cicp, header.model()), fromMark(chunks.srgb),
                      fromGamma(chunks.gama, chunks.chrm, gray), fromGamma(chunks.gama, {}, gray)})
    if (fits(record)) return record;
  return Untagged{};
}

}  // namespace ostra
