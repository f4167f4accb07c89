#pragma once
#include <cstdint>
#include <optional>

#include <jxl/color_encoding.h>

#include "platform/imageio/codec_door.h"

namespace ostra {

enum class JxlAlpha { none, straight, premultiplied };

/// What a file says of itself, nothing decoded.
struct JxlStructure {
  std::uint32_t width = 0, height = 0;  // as the pixels lie
  std::uint32_t frames = 1;
  bool isAnimation = false;
  unsigned bits = 8;
  bool isFloat = false;
  int orientation = 1;
  CGColorSpaceModel model = CGColorSpaceModel::rgb;
  JxlAlpha alpha = JxlAlpha::none;
  /// The further channel that is the black of CMYK.
  std::optional<std::uint32_t> black;
  /// Stored are the numbers of the picture's own space, not what the eye sees.
  bool keepsNumbers = true;
  /// What decoded pixels mean.
  ProfileRecord profile = Untagged{};
  /// The space to ask the decoder for, where it has the choice.
  std::optional<JxlColorEncoding> wanted;

  unsigned writtenBits() const { return bits > 8 || isFloat ? 16 : 8; }
};

/// Nothing when the headers are damaged or cut off, when a frame of an animation is, or when the colours
/// cannot be told. Throws `LimitExceeded` and `std::bad_alloc`.
std::optional<JxlStructure> readJxlStructure(ByteView file, const Limits& limits);

}  // namespace ostra
