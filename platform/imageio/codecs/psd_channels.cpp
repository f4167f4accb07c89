#include "platform/imageio/codecs/psd_channels.h"

#include <algorithm>
#include <cstring>

#include "platform/imageio/codecs/big_endian.h"

namespace ostra {
namespace {

constexpr unsigned kPlain = 0, kPacked = 1;

}  // namespace

bool unpackBits(ByteView packed, std::uint8_t* into, std::size_t size) {
  constexpr std::uint8_t kNothing = 128;
  while (!packed.empty()) {
    const std::uint8_t head = packed[0];
    packed = packed.subspan(1);
    if (head == kNothing) continue;
    const bool repeats = head > kNothing;
    const std::size_t count = repeats ? 257u - head : head + 1u, stored = repeats ? 1 : count;
    if (count > size || stored > packed.size()) return false;
    if (repeats) {
      std::memset(into, packed[0], count);
    } else {
      std::memcpy(into, packed.data(), count);
    }
    packed = packed.subspan(stored);
    into += count;
    size -= count;
  }
  return size == 0;
}

PsdChannels::PsdChannels(const PsdStructure& psd)
    : height_(psd.height), bytesPerRow_((std::size_t{psd.width} * psd.bits + 7) / 8) {}

bool PsdChannels::findPacked(ByteView data, unsigned channels, bool isLarge) {
  const std::size_t rows = std::size_t{height_} * channels, countSize = isLarge ? 4 : 2;
  if (data.size() < rows * countSize) return false;
  const ByteView counts = data.first(rows * countSize);
  ByteView rest = data.subspan(counts.size());
  packed_.reserve(rows);
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t count = isLarge ? bigEndian32(counts, 4 * row) : bigEndian16(counts, 2 * row);
    if (count > rest.size()) return false;
    packed_.push_back(rest.first(count));
    rest = rest.subspan(count);
  }
  return true;
}

std::optional<PsdChannels> PsdChannels::find(const PsdStructure& psd) {
  if (psd.pixels.size() < 2) return std::nullopt;
  PsdChannels channels(psd);
  const unsigned compression = bigEndian16(psd.pixels, 0);
  const ByteView data = psd.pixels.subspan(2);
  if (compression == kPacked && channels.findPacked(data, psd.channels, psd.isLarge)) return channels;
  if (compression != kPlain) return std::nullopt;
  if (data.size() / psd.channels / psd.height < channels.bytesPerRow_) return std::nullopt;
  channels.plain_ = data;
  return channels;
}

bool PsdChannels::read(unsigned channel, std::uint32_t y, std::uint8_t* into) const {
  const std::size_t row = std::size_t{channel} * height_ + y;
  if (!packed_.empty()) return unpackBits(packed_[row], into, bytesPerRow_);
  std::memcpy(into, plain_.data() + row * bytesPerRow_, bytesPerRow_);
  return true;
}

}  // namespace ostra
