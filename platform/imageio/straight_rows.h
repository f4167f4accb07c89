#pragma once
#include <cstdint>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// The rows of a picture as encoders know them: without alpha, with a skipped fourth component, or with
/// straight alpha last. Rows that are so already are not copied. Others are made one at a time, premultiplied
/// colour being divided by its alpha (rounded to the nearest, at most full): a second picture of them all
/// would be the most memory that a conversion ever needs.
class StraightRows {
 public:
  /// The pixels must outlive it.
  explicit StraightRows(const Pixels& pixels);

  /// `none`, `noneSkipLast` or `last`.
  CGImageAlphaInfo alpha() const { return alpha_; }
  /// Valid until the next call.
  const std::uint8_t* row(std::uint32_t y);

 private:
  const Pixels& pixels_;
  CGImageAlphaInfo alpha_;
  bool premultiplied_;
  bool first_;    // what is not colour stands before it
  Bytes buffer_;  // one row; empty when rows are passed on
};

}  // namespace ostra
