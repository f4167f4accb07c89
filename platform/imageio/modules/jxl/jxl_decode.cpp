#include "platform/imageio/modules/jxl/jxl_decode.h"

#include <cstring>
#include <vector>

#include "platform/imageio/modules/jxl/jxl_decoder.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

Layout layoutOf(const JxlStructure& structure) {
  Layout layout;
  layout.width = structure.width;
  layout.height = structure.height;
  layout.bitsPerComponent = static_cast<std::uint8_t>(structure.writtenBits());
  layout.model = structure.model;
  const bool isGray = layout.model == CGColorSpaceModel::monochrome;
  const bool hasAlpha = structure.alpha != JxlAlpha::none;
  const unsigned samples = !isGray ? 4 : hasAlpha ? 2 : 1;
  layout.bitsPerPixel = static_cast<std::uint8_t>(samples * layout.bitsPerComponent);
  layout.bytesPerRow = std::size_t{layout.width} * (layout.bitsPerPixel / 8u);
  const CGImageAlphaInfo alpha = structure.alpha == JxlAlpha::straight ? CGImageAlphaInfo::last
                                 : structure.alpha == JxlAlpha::premultiplied
                                     ? CGImageAlphaInfo::premultipliedLast
                                 : layout.model == CGColorSpaceModel::rgb ? CGImageAlphaInfo::noneSkipLast
                                                                          : CGImageAlphaInfo::none;
  layout.bitmapInfo =
      static_cast<CGBitmapInfo>(alpha) | (layout.bitsPerComponent == 16 ? kCGBitmapByteOrder16Little : 0);
  return layout;
}

JxlPixelFormat formatOf(const Layout& layout) {
  return {static_cast<std::uint32_t>(layout.bitsPerPixel / layout.bitsPerComponent),
          layout.bitsPerComponent == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_LITTLE_ENDIAN, 0};
}

/// Where the decoder lays the frame, and the black channel beside it.
class FrameMemory {
 public:
  FrameMemory(const Layout& layout, std::optional<std::uint32_t> black)
      : layout_(layout), black_(black), pixels_(layout.bytesPerRow * layout.height) {
    if (black) blackPlane_.resize(pixels_.size() / 4);
  }

  bool give(JxlDecoder* decoder) {
    const JxlPixelFormat format = formatOf(layout_);
    std::size_t size = 0;
    if (JxlDecoderImageOutBufferSize(decoder, &format, &size) != JXL_DEC_SUCCESS || size != pixels_.size() ||
        JxlDecoderSetImageOutBuffer(decoder, &format, pixels_.data(), size) != JXL_DEC_SUCCESS)
      return false;
    if (!black_) return true;
    return JxlDecoderExtraChannelBufferSize(decoder, &format, &size, *black_) == JXL_DEC_SUCCESS &&
           size == blackPlane_.size() &&
           JxlDecoderSetExtraChannelBuffer(decoder, &format, blackPlane_.data(), size, *black_) ==
               JXL_DEC_SUCCESS;
  }

  PixelMemory take() && {
    if (black_) putInks();
    return std::move(pixels_);
  }

 private:
  // The format counts the light that ink leaves.
  void putInks() {
    const std::size_t size = layout_.bitsPerComponent / 8;
    for (std::size_t i = 0; i < blackPlane_.size(); ++i)
      pixels_.data()[i / size * 4 * size + 3 * size + i % size] = blackPlane_[i];
    for (std::size_t i = 0; i < pixels_.size(); ++i)
      pixels_.data()[i] = static_cast<std::uint8_t>(~pixels_.data()[i]);
  }

  const Layout& layout_;
  std::optional<std::uint32_t> black_;
  PixelMemory pixels_;
  Bytes blackPlane_;
};

/// Goes on until the picture that the memory was given for is there, whose place `give` tells; of a still
/// picture also through everything behind it.
template <class Give>
bool runUntilWhole(JxlDecoder* decoder, const JxlStructure& structure, Give give) {
  bool hasPlace = false, isWhole = false;
  while (true) {
    switch (JxlDecoderProcessInput(decoder)) {
      case JXL_DEC_COLOR_ENCODING:
        if (structure.wanted &&
            JxlDecoderSetPreferredColorProfile(decoder, &*structure.wanted) != JXL_DEC_SUCCESS)
          return false;
        break;
      case JXL_DEC_NEED_IMAGE_OUT_BUFFER:
        if (hasPlace || !give()) return false;
        hasPlace = true;
        break;
      case JXL_DEC_FULL_IMAGE:
        isWhole = hasPlace;
        if (structure.isAnimation) return isWhole;
        break;
      case JXL_DEC_SUCCESS:
        return isWhole;
      default:
        return false;
    }
  }
}

constexpr int kEvents = JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE;

bool decodeInto(FrameMemory& memory, ByteView file, const JxlStructure& structure) {
  const JxlDecoderOwner decoder = makeJxlDecoder(file, kEvents);
  return runUntilWhole(decoder.get(), structure, [&] { return memory.give(decoder.get()); });
}

// The other frames were walked over when they were counted, each up to the next: of the last one nothing else
// tells that it is there.
bool lastFrameIsWhole(ByteView file, const JxlStructure& structure, const Layout& layout) {
  const JxlDecoderOwner decoder = makeJxlDecoder(file, kEvents);
  JxlDecoderSkipFrames(decoder.get(), structure.frames - 1);
  return runUntilWhole(decoder.get(), structure, [&] {
    const JxlPixelFormat format = formatOf(layout);
    const auto ignore = [](void*, std::size_t, std::size_t, std::size_t, const void*) {};
    return JxlDecoderSetImageOutCallback(decoder.get(), &format, ignore, nullptr) == JXL_DEC_SUCCESS;
  });
}

// The library scales by floats, which miss the nearest word by one here and there. Samples that are as close
// to what one of fewer bits stands for are that.
void scaleExactly(PixelMemory& pixels, unsigned bits) {
  const std::uint32_t largest = (1u << bits) - 1;
  std::vector<std::uint16_t> exact(65536);
  for (std::uint32_t i = 0; i < exact.size(); ++i) {
    const std::uint32_t value = (i * largest + 32767) / 65535, word = (value * 65535 + largest / 2) / largest;
    exact[i] = static_cast<std::uint16_t>(word + 1 >= i && word <= i + 1 ? word : i);
  }
  for (std::size_t at = 0; at + 1 < pixels.size(); at += 2) {
    std::uint16_t word = 0;
    std::memcpy(&word, pixels.data() + at, sizeof word);
    std::memcpy(pixels.data() + at, &exact[word], sizeof word);
  }
}

// Beside the pixels: three planes of floats, and as much again while frames are put together.
std::uint64_t bytesForAPixel(const Layout& layout) { return layout.bitsPerPixel / 8u + 24; }

}  // namespace

Answer<Pixels> decodeJxl(ByteView file, const JxlStructure& structure, const Limits& limits) {
  const Layout layout = layoutOf(structure);
  const LimitName limit =
      exceededLimit(limits, layout.width, layout.height, bytesForAPixel(layout), file.size());
  if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
  FrameMemory memory(layout, structure.black);
  if (!decodeInto(memory, file, structure)) return Fault{FaultKind::damaged};
  if (structure.frames > 1 && !lastFrameIsWhole(file, structure, layout)) return Fault{FaultKind::damaged};
  PixelMemory pixels = std::move(memory).take();
  const bool scalesUp = structure.bits > 8 && structure.bits < 16 && !structure.isFloat;
  if (scalesUp && structure.keepsNumbers) scaleExactly(pixels, structure.bits);
  return Pixels{layout, std::move(pixels).share(), structure.profile};
}

}  // namespace ostra
