#pragma once
#include <array>
#include <memory>
#include <vector>

#include "platform/graphics/encode_table.h"
#include "platform/graphics/pixel_chunk.h"
#include "platform/graphics/shaper.h"

namespace ostra {

/// What the values of a source are: bytes, words, or anything in between (premultiplied pixels, divided).
enum class SourceValues { bytes, words, between };

/// Conversion between two profiles of curves: values to light by table, one matrix, light to values by table.
/// Agrees with the same in double precision within 1 at 8 and 2 at 16 bits. Immutable; any number of threads
/// may run one.
class MatrixKernel {
 public:
  /// Null when the destination cannot be reached.
  static std::shared_ptr<const MatrixKernel> create(const Shaper& source, const Shaper& destination,
                                                    SourceValues values);

  /// A row of bytes or words, as the kernel was made for, which are not premultiplied. Leaves alpha alone.
  void convertRow(const PixelFormat& format, const std::uint8_t* row, PixelChunk& chunk) const;
  /// Values in the chunk, in place; the kernel was made for values in between.
  void convertValues(PixelChunk& chunk) const;

 private:
  struct Decode {
    std::vector<float> light;
    float toeEnd = 0, toeSlope = 0;
    Decode(const ToneCurve& curve, SourceValues values);
    void run(float* values, std::size_t count) const;
  };
  void matchLight(PixelChunk& chunk) const;

  std::size_t in_ = 3, out_ = 3;
  std::array<std::shared_ptr<const Decode>, 3> decode_;
  std::array<std::array<float, 3>, 3> matrix_{};
  std::array<std::shared_ptr<const EncodeTable>, 3> encode_;
};

}  // namespace ostra
