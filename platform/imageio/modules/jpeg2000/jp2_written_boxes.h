#pragma once
#include <optional>
#include <string>
#include <vector>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// What surrounds the codestream.
struct Jp2WrittenBoxes {
  /// All boxes before it, and the head of its own, whose first four bytes are its length.
  Bytes before;
  std::vector<std::string> comments;
};

/// For gray or RGB pixels, and an opacity channel after them where there is one. Nothing when the profile or
/// a metadata block is malformed.
std::optional<Jp2WrittenBoxes> jp2BoxesToWrite(const Pixels& pixels, bool hasAlpha,
                                               const Properties* properties);

}  // namespace ostra
