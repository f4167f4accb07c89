#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"

namespace ostra {

/// The head of a file: the logical screen and its palette (red, green, blue of each entry), empty when there
/// is none.
struct GifScreen {
  std::uint32_t width = 0, height = 0;
  /// Pixel width to height is this and 15, in 64ths; 0 says nothing.
  unsigned aspect = 0;
  ByteView palette;
  std::size_t size = 0;  // in the file
};
/// Nothing when the bytes do not begin with a GIF's head, or end in it.
std::optional<GifScreen> readGifScreen(ByteView file);

struct GifFrame {
  std::uint32_t left = 0, top = 0, width = 0, height = 0;
  bool interlaced = false;
  ByteView palette;  // its own; empty when it has none
};

/// Extension labels.
inline constexpr std::uint8_t kGifGraphicControl = 0xF9, kGifComment = 0xFE, kGifApplication = 0xFF;

struct GifBlock {
  std::optional<GifFrame> frame;  // else it is an extension
  std::uint8_t label = 0;         // of an extension
  /// Sub-blocks and their end; of a frame with the code size before them.
  ByteView data;
  /// Of a block that the file's end cuts off, nothing but `frame` is told.
  bool isWhole = false;
};

/// The blocks behind the head, up to the trailer, the end of the file, or the first byte that begins none.
class GifBlockWalk {
 public:
  GifBlockWalk(ByteView file, const GifScreen& screen) : rest_(file.subspan(screen.size)) {}
  std::optional<GifBlock> next();
  /// Asked after the last block: whether the file ended where a block did. Only the trailer may be missing.
  bool endedWell() const { return endedWell_; }

 private:
  GifBlock takeExtension();
  GifBlock takeFrame();
  ByteView takeSubBlocks(std::size_t before);
  void stop();

  ByteView rest_;
  bool endedWell_ = true;
};

/// What a graphic control extension says of the frame behind it.
struct GifControl {
  unsigned delay = 0;  // hundredths of a second
  std::optional<std::uint8_t> transparent;
};
std::optional<GifControl> readGifControl(const GifBlock& block);

/// What the blocks say, pixels not looked at.
struct GifStructure {
  GifScreen screen;
  std::uint32_t width = 0, height = 0;  // of the canvas
  std::uint32_t frames = 0;
  GifFrame first;
  ByteView firstData;
  std::optional<std::uint8_t> transparent;  // in the first frame
  bool isComplete = false;

  bool coversCanvas() const { return first.width == width && first.height == height; }
  bool hasAlpha() const { return transparent || !coversCanvas(); }
  ByteView palette() const { return first.palette.empty() ? screen.palette : first.palette; }
};
/// Nothing when there is no frame, or when the first one has no size. `maximumFrames` ends the counting.
std::optional<GifStructure> readGifStructure(ByteView file, std::uint32_t maximumFrames);

}  // namespace ostra
