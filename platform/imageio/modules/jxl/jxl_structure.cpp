#include "platform/imageio/modules/jxl/jxl_structure.h"

#include <algorithm>

#include "platform/imageio/codecs/bmff_boxes.h"
#include "platform/imageio/modules/jxl/jxl_colour.h"
#include "platform/imageio/modules/jxl/jxl_decoder.h"

namespace ostra {
namespace {

// Boxes that are cut off behind the picture are no matter to the library.
bool boxesAreWhole(ByteView file) {
  constexpr std::uint8_t kFirstOfBoxes = 0;
  if (file.empty() || file[0] != kFirstOfBoxes) return true;
  BmffWalk walk(file);
  while (walk.next()) {
  }
  return walk.endedWell();
}

bool readBasics(const JxlDecoder* decoder, JxlStructure& structure) {
  JxlBasicInfo info;
  if (JxlDecoderGetBasicInfo(decoder, &info) != JXL_DEC_SUCCESS) return false;
  structure.orientation = info.orientation;
  structure.width = info.xsize;
  structure.height = info.ysize;
  structure.bits = info.bits_per_sample;
  structure.isFloat = info.exponent_bits_per_sample > 0;
  structure.keepsNumbers = info.uses_original_profile != 0;
  if (info.num_color_channels == 1) structure.model = CGColorSpaceModel::monochrome;
  if (info.alpha_bits > 0)
    structure.alpha = info.alpha_premultiplied != 0 ? JxlAlpha::premultiplied : JxlAlpha::straight;
  structure.isAnimation = info.have_animation != 0;
  for (std::uint32_t i = 0; i < info.num_extra_channels; ++i) {
    JxlExtraChannelInfo channel;
    if (JxlDecoderGetExtraChannelInfo(decoder, i, &channel) != JXL_DEC_SUCCESS) return false;
    if (channel.type == JXL_CHANNEL_BLACK) structure.black = i;
  }
  if (!structure.black) return true;
  // No surface has both inks and opacity.
  if (structure.alpha != JxlAlpha::none || info.num_color_channels != 3) return false;
  structure.model = CGColorSpaceModel::cmyk;
  return true;
}

// Those that are shown; nothing when one of them is cut off.
std::optional<std::uint32_t> countFrames(ByteView file, std::uint32_t most) {
  const JxlDecoderOwner decoder = makeJxlDecoder(file, JXL_DEC_FRAME);
  std::uint32_t count = 0;
  while (true) {
    const JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());
    if (status == JXL_DEC_SUCCESS) return std::max(count, 1u);
    if (status != JXL_DEC_FRAME) return std::nullopt;
    if (++count >= most) return count;
  }
}

}  // namespace

std::optional<JxlStructure> readJxlStructure(ByteView file, const Limits& limits) {
  if (!boxesAreWhole(file)) return std::nullopt;
  JxlStructure structure;
  const JxlDecoderOwner decoder = makeJxlDecoder(file, JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING);
  if (JxlDecoderProcessInput(decoder.get()) != JXL_DEC_BASIC_INFO || !readBasics(decoder.get(), structure) ||
      JxlDecoderProcessInput(decoder.get()) != JXL_DEC_COLOR_ENCODING)
    return std::nullopt;
  if (!readJxlColour(decoder.get(), limits, structure)) return std::nullopt;
  if (!structure.isAnimation) return structure;
  const auto frames = countFrames(file, std::max(1u, limits.frames));
  if (!frames) return std::nullopt;
  structure.frames = *frames;
  return structure;
}

}  // namespace ostra
