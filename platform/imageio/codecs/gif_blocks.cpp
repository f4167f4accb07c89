#include "platform/imageio/codecs/gif_blocks.h"

#include <algorithm>
#include <utility>

#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::size_t kScreenSize = 6 + 7, kFrameSize = 1 + 9;
constexpr std::uint8_t kExtension = 0x21, kFrame = 0x2C, kTrailer = 0x3B, kPlainText = 0x01;

std::uint16_t littleEndian16(ByteView bytes, std::size_t at) { return read16(bytes, at, ByteOrder::little); }

// Both kinds of head tell it alike: a flag, and the number of entries as a power of two.
std::size_t paletteSize(std::uint8_t flags) {
  const bool hasPalette = (flags & 0x80) != 0;
  return hasPalette ? std::size_t{6} << (flags & 7) : 0;
}

// How far sub-blocks go, their end included.
std::optional<std::size_t> subBlocksSize(ByteView bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    if (bytes[at] == 0) return at + 1;
    at += std::size_t{1} + bytes[at];
  }
  return std::nullopt;
}

}  // namespace

std::optional<GifScreen> readGifScreen(ByteView file) {
  if (file.size() < kScreenSize) return std::nullopt;
  const std::string_view signature = asText(file.first(6));
  if (signature != "GIF87a" && signature != "GIF89a") return std::nullopt;
  GifScreen screen;
  screen.width = littleEndian16(file, 6);
  screen.height = littleEndian16(file, 8);
  screen.aspect = file[12];
  const std::size_t palette = paletteSize(file[10]);
  if (palette > file.size() - kScreenSize) return std::nullopt;
  screen.palette = file.subspan(kScreenSize, palette);
  screen.size = kScreenSize + palette;
  return screen;
}

void GifBlockWalk::stop() {
  endedWell_ = false;
  rest_ = {};
}

ByteView GifBlockWalk::takeSubBlocks(std::size_t before) {
  if (before > rest_.size()) {
    stop();
    return {};
  }
  const auto size = subBlocksSize(rest_.subspan(before));
  if (!size) {
    stop();
    return {};
  }
  const ByteView data = rest_.first(before + *size);
  rest_ = rest_.subspan(data.size());
  return data;
}

GifBlock GifBlockWalk::takeExtension() {
  GifBlock block;
  constexpr std::size_t kHead = 2;
  if (rest_.size() < kHead) {
    stop();
    return block;
  }
  block.label = rest_[1];
  rest_ = rest_.subspan(kHead);
  block.data = takeSubBlocks(0);
  block.isWhole = !block.data.empty();
  return block;
}

GifBlock GifBlockWalk::takeFrame() {
  GifBlock block;
  if (rest_.size() < kFrameSize) {
    stop();
    return block;
  }
  GifFrame frame;
  frame.left = littleEndian16(rest_, 1);
  frame.top = littleEndian16(rest_, 3);
  frame.width = littleEndian16(rest_, 5);
  frame.height = littleEndian16(rest_, 7);
  frame.interlaced = (rest_[9] & 0x40) != 0;
  const std::size_t palette = paletteSize(rest_[9]);
  rest_ = rest_.subspan(kFrameSize);
  if (palette <= rest_.size()) {
    frame.palette = rest_.first(palette);
    rest_ = rest_.subspan(palette);
    constexpr std::size_t kCodeSize = 1;
    block.data = takeSubBlocks(kCodeSize);
  } else {
    stop();
  }
  block.isWhole = !block.data.empty();
  block.frame = frame;
  return block;
}

std::optional<GifBlock> GifBlockWalk::next() {
  if (rest_.empty() || rest_[0] == kTrailer) return std::nullopt;
  if (rest_[0] == kExtension) return takeExtension();
  if (rest_[0] == kFrame) return takeFrame();
  stop();
  return std::nullopt;
}

std::optional<GifControl> readGifControl(const GifBlock& block) {
  const bool isControl = !block.frame && block.label == kGifGraphicControl;
  if (!isControl || block.data.size() < 6 || block.data[0] < 4) return std::nullopt;
  GifControl control;
  control.delay = littleEndian16(block.data, 2);
  if ((block.data[1] & 1) != 0) control.transparent = block.data[4];
  return control;
}

std::optional<GifStructure> readGifStructure(ByteView file, std::uint32_t maximumFrames) {
  const auto screen = readGifScreen(file);
  if (!screen) return std::nullopt;
  GifStructure structure;
  structure.screen = *screen;
  GifBlockWalk walk(file, *screen);
  while (const auto block = walk.next()) {
    if (const auto control = readGifControl(*block); control && structure.frames == 0)
      structure.transparent = control->transparent;
    if (!block->frame) {
      // A control belongs to what is drawn next, which this is too, though nobody draws it.
      if (block->label == kPlainText && structure.frames == 0) structure.transparent.reset();
      continue;
    }
    if (structure.frames == 0) {
      structure.first = *block->frame;
      structure.firstData = block->data;
    }
    ++structure.frames;
    if (structure.frames >= std::max(1u, maximumFrames)) break;
  }
  const GifFrame& first = structure.first;
  if (first.width == 0 || first.height == 0) return std::nullopt;
  structure.width = std::max(screen->width, first.left + first.width);
  structure.height = std::max(screen->height, first.top + first.height);
  structure.isComplete = walk.endedWell();
  return structure;
}

}  // namespace ostra
