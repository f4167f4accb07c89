#pragma once
#include <optional>
#include <vector>

#include "platform/imageio/codecs/psd_structure.h"

namespace ostra {

/// The channels of a merged picture, each row by itself, big-endian as they are stored.
class PsdChannels {
 public:
  /// Nothing when a channel is not there to its end, or is stored in a way that merged pictures are not.
  static std::optional<PsdChannels> find(const PsdStructure& psd);

  std::size_t bytesPerRow() const { return bytesPerRow_; }
  /// Writes a row of a channel; false when what is stored does not make exactly one.
  bool read(unsigned channel, std::uint32_t y, std::uint8_t* into) const;

 private:
  explicit PsdChannels(const PsdStructure& psd);
  bool findPacked(ByteView data, unsigned channels, bool isLarge);

  std::uint32_t height_;
  std::size_t bytesPerRow_;
  ByteView plain_;
  /// Of packed channels: where each row lies, the rows of the first channel before those of the second.
  std::vector<ByteView> packed_;
};

/// Fills `into` from PackBits; false when the bytes make less or more than that.
bool unpackBits(ByteView packed, std::uint8_t* into, std::size_t size);

}  // namespace ostra
