#pragma once
#include <optional>
#include <vector>

#include "platform/imageio/modules/jpeg2000/codestream.h"
#include "platform/imageio/modules/jpeg2000/jp2_colour.h"

namespace ostra {

struct Jp2Channel {
  std::size_t component = 0;
  unsigned bits = 8;
  bool isSigned = false;
  /// What the component's values stand for, where it indexes a palette.
  std::optional<std::vector<std::uint32_t>> palette;
};

enum class Jp2Alpha { none, straight, premultiplied };

/// The channels that make the picture, in the order of its pixels, alpha last.
struct Jp2Picture {
  std::uint32_t width = 0, height = 0;
  unsigned bits = 8;
  Jp2Space space;
  Jp2Alpha alpha = Jp2Alpha::none;
  bool isIndexed = false;
  std::vector<Jp2Channel> channels;

  unsigned writtenBits() const { return bits > 8 ? 16 : 8; }
};

/// Nothing when the boxes and the codestream contradict each other, or when no space of ours has such
/// channels. Throws `LimitExceeded`.
std::optional<Jp2Picture> jp2PictureOf(const Jp2Boxes& boxes, const Codestream& codestream,
                                       const Limits& limits);

}  // namespace ostra
