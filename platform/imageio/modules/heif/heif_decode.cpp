#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/imageio/codecs/heif_reader.h"
#include "platform/imageio/codecs/wide_samples.h"
#include "platform/imageio/modules/heif/heif.h"
#include "platform/imageio/modules/heif/heif_pictures.h"
#include "platform/imageio/modules/heif/hevc_decoder.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

constexpr std::uint32_t kMostPerSide = 65535;

/// Whether the range of a gray plane is that of video, with room below black and above white.
bool hasNarrowRange(const heif_image* image) {
  heif_color_profile_nclx* found = nullptr;
  if (!succeeded(heif_image_get_nclx_color_profile(image, &found))) return false;
  const HeifNumbers numbers(found);
  return numbers->full_range_flag == 0;
}

class HeicReader : public HeifReader {
 public:
  using HeifReader::HeifReader;

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const LimitName limit =
        exceededLimit(limits, heif().width, heif().height, bytesForAPixel(), file().size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    const HeifContext context(heif_context_alloc());
    const HeifHandle handle = context == nullptr ? nullptr : primaryPicture(context.get());
    const HeifImage image = handle == nullptr ? nullptr : decodedBy(handle.get());
    if (image == nullptr) return Fault{FaultKind::damaged};
    const bool alpha = heif_image_handle_has_alpha_channel(handle.get()) != 0;
    if (alpha != heif().hasAlpha) return Fault{FaultKind::damaged};
    const bool premultiplied = heif_image_handle_is_premultiplied_alpha(handle.get()) != 0;
    const Layout layout = this->layout(heif().bits > 8, alpha, premultiplied);
    PixelMemory memory(layout.bytesPerRow * layout.height);
    const bool done =
        heif().isGray ? copyGray(image.get(), layout, memory) : copyColour(image.get(), layout, memory);
    if (!done) return Fault{FaultKind::damaged};
    return Pixels{layout, std::move(memory).share(), profile(limits)};
  }

 private:
  /// The decoder's planes and the library's own, both whole at the worst, its interleaved copy, and ours.
  std::uint64_t bytesForAPixel() const {
    const std::uint64_t planes = heif().isGray ? 2 : 6, copies = isPlane() ? 3 : 8;
    return (planes + copies + (heif().hasAlpha ? 2 : 0)) * (heif().bits > 8 ? 2 : 1);
  }

  /// Gray parts can be put together as colours only.
  bool isPlane() const { return heif().isGray && heif().itemType == bmffType("hvc1"); }

  HeifHandle primaryPicture(heif_context* context) const {
    heif_context_set_max_decoding_threads(context, 0);
    heif_context_set_maximum_image_size_limit(context, kMostPerSide);
    heif_image_handle* handle = nullptr;
    const bool found = succeeded(heif_context_read_from_memory_without_copy(context, file().data(),
                                                                            file().size(), nullptr)) &&
                       succeeded(heif_context_get_primary_image_handle(context, &handle));
    return HeifHandle(found ? handle : nullptr);
  }

  HeifImage decodedBy(const heif_image_handle* handle) const {
    const HeifDecodingOptions options(heif_decoding_options_alloc());
    if (options == nullptr) return nullptr;
    options->ignore_transformations = 1;
    options->strict_decoding = 1;
    heif_image* image = nullptr;
    const heif_chroma interleaved =
        heif().bits > 8 ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RGBA;
    const heif_error error =
        heif_decode_image(handle, &image, isPlane() ? heif_colorspace_monochrome : heif_colorspace_RGB,
                          isPlane() ? heif_chroma_monochrome : interleaved, options.get());
    HeifImage decoded(succeeded(error) ? image : nullptr);
    const bool warned =
        decoded != nullptr && heif_image_get_decoding_warnings(decoded.get(), 0, nullptr, 0) > 0;
    return warned ? nullptr : std::move(decoded);
  }

  /// Where the picture begins in a plane; null when the plane is not one of these pictures.
  const std::uint8_t* cropped(const HeifPlane& plane, std::size_t bytesPerPixel) const {
    const HeifCrop& crop = heif().transforms.crop;
    if (plane.data == nullptr || plane.width != heif().width || plane.height != heif().height) return nullptr;
    return plane.data + crop.y * plane.stride + crop.x * bytesPerPixel;
  }

  bool copyColour(heif_image* image, const Layout& layout, PixelMemory& memory) const {
    const HeifPlane plane = planeOf(image, heif_channel_interleaved);
    const std::uint8_t* from = cropped(plane, layout.bitsPerPixel / 8u);
    if (from == nullptr || (plane.bits > 8) != (layout.bitsPerComponent == 16)) return false;
    const WideSamples wide(plane.bits, 16);
    for (std::uint32_t y = 0; y < layout.height; ++y) {
      std::uint8_t* row = memory.data() + y * layout.bytesPerRow;
      std::memcpy(row, from + y * plane.stride, layout.bytesPerRow);
      if (plane.bits > 8) wide.widen(row, std::size_t{layout.width} * 4);
    }
    return true;
  }

  bool copyGray(heif_image* image, const Layout& layout, PixelMemory& memory) const {
    if (!isPlane()) return copyEqualColours(image, layout, memory);
    const HeifPlane gray = planeOf(image, heif_channel_Y);
    if (!copySamples(gray, WideSamples(gray.bits, layout.bitsPerComponent, hasNarrowRange(image)), layout,
                     memory.data()))
      return false;
    if (!heif().hasAlpha) return true;
    const HeifPlane alpha = planeOf(image, heif_channel_Alpha);
    return copySamples(alpha, WideSamples(alpha.bits, layout.bitsPerComponent), layout,
                       memory.data() + layout.bitsPerComponent / 8);
  }

  bool copyEqualColours(heif_image* image, const Layout& layout, PixelMemory& memory) const {
    const HeifPlane plane = planeOf(image, heif_channel_interleaved);
    const std::size_t sample = layout.bitsPerComponent / 8u;
    const std::uint8_t* from = cropped(plane, 4 * sample);
    if (from == nullptr || (plane.bits > 8) != (sample == 2)) return false;
    const WideSamples values(plane.bits, layout.bitsPerComponent);
    const std::size_t step = layout.bitsPerPixel / 8u;
    for (std::uint32_t y = 0; y < layout.height; ++y) {
      std::uint8_t* row = memory.data() + y * layout.bytesPerRow;
      values.spread(from + y * plane.stride, layout.width, row, step, 4);
      if (heif().hasAlpha)
        values.spread(from + y * plane.stride + 3 * sample, layout.width, row + sample, step, 4);
    }
    return true;
  }

  bool copySamples(const HeifPlane& plane, const WideSamples& values, const Layout& layout,
                   std::uint8_t* to) const {
    const std::uint8_t* from = cropped(plane, plane.bits > 8 ? 2 : 1);
    if (from == nullptr) return false;
    for (std::uint32_t y = 0; y < layout.height; ++y)
      values.spread(from + y * plane.stride, layout.width, to + y * layout.bytesPerRow,
                    layout.bitsPerPixel / 8u);
    return true;
  }
};

Answer<std::unique_ptr<CodecReader>> open(FileBytes file, std::string_view type) {
  auto heif = readHeifFile(file);
  if (!heif) return Fault{FaultKind::damaged};
  return std::make_unique<HeicReader>(file, std::move(*heif), type);
}

}  // namespace

Answer<std::unique_ptr<CodecReader>> openHeic(FileBytes file, const Limits&) {
  return open(file, "public.heic");
}
Answer<std::unique_ptr<CodecReader>> openHeics(FileBytes file, const Limits&) {
  return open(file, "public.heics");
}
Answer<std::unique_ptr<CodecReader>> openHeif(FileBytes file, const Limits&) {
  return open(file, "public.heif");
}

bool readyHeifLibrary() {
  static const bool ready = succeeded(heif_init(nullptr)) && registerHevcDecoder();
  return ready;
}

}  // namespace ostra
