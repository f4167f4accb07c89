#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

#include <avif/avif.h>

#include "platform/imageio/codecs/heif_reader.h"
#include "platform/imageio/codecs/wide_samples.h"
#include "platform/imageio/modules/avif/avif.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

struct DestroyDecoder {
  void operator()(avifDecoder* decoder) const { avifDecoderDestroy(decoder); }
};
using Decoder = std::unique_ptr<avifDecoder, DestroyDecoder>;

class AvifReader : public HeifReader {
 public:
  using HeifReader::HeifReader;

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const LimitName limit =
        exceededLimit(limits, heif().width, heif().height, bytesForAPixel(), file().size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    if (std::uint64_t{heif().width} * heif().height > AVIF_DEFAULT_IMAGE_SIZE_LIMIT)
      return Fault{FaultKind::limit, LimitName::pixels};
    const Decoder decoder = decoded();
    if (decoder == nullptr || !isAsClaimed(*decoder->image)) return Fault{FaultKind::damaged};
    const avifImage& image = *decoder->image;
    const Layout layout =
        this->layout(heif().bits > 8, image.alphaPlane != nullptr, image.alphaPremultiplied != 0);
    PixelMemory memory(layout.bytesPerRow * layout.height);
    const bool done = heif().isGray ? copyGray(image, layout, memory) : convert(image, layout, memory);
    if (!done) return Fault{FaultKind::damaged};
    return Pixels{layout, std::move(memory).share(), profile(limits)};
  }

 private:
  /// The planes of the decoder, of a grid also the joined ones, and our copy, of a cropped one two.
  std::uint64_t bytesForAPixel() const {
    const bool crops = heif().transforms.crop.width != heif().width;
    const std::uint64_t planes = heif().isGray ? 2 : 6, copies = (heif().isGray ? 2 : 4) * (crops ? 2 : 1);
    return (planes + copies + (heif().hasAlpha ? 2 : 0)) * (heif().bits > 8 ? 2 : 1);
  }

  // Metadata and cropping are read by ourselves; what is wrong with them would make the library refuse all.
  Decoder decoded() const {
    Decoder decoder(avifDecoderCreate());
    if (decoder == nullptr) return nullptr;
    decoder->codecChoice = AVIF_CODEC_CHOICE_DAV1D;
    decoder->maxThreads = 1;
    decoder->requestedSource = AVIF_DECODER_SOURCE_PRIMARY_ITEM;
    decoder->ignoreExif = decoder->ignoreXMP = AVIF_TRUE;
    decoder->imageDimensionLimit = 0;
    decoder->strictFlags = AVIF_STRICT_DISABLED;
    const bool done = avifDecoderSetIOMemory(decoder.get(), file().data(), file().size()) == AVIF_RESULT_OK &&
                      avifDecoderParse(decoder.get()) == AVIF_RESULT_OK &&
                      avifDecoderNextImage(decoder.get()) == AVIF_RESULT_OK;
    return done ? std::move(decoder) : nullptr;
  }

  bool isAsClaimed(const avifImage& image) const {
    return image.width == heif().width && image.height == heif().height && image.depth == heif().bits &&
           (image.yuvFormat == AVIF_PIXEL_FORMAT_YUV400) == heif().isGray &&
           (image.alphaPlane != nullptr || !heif().hasAlpha);
  }

  bool convert(const avifImage& image, const Layout& layout, PixelMemory& memory) const {
    const HeifCrop& crop = heif().transforms.crop;
    const std::size_t pixel = layout.bitsPerPixel / 8u, row = heif().width * pixel;
    const bool crops = crop.width != heif().width || crop.height != heif().height;
    Bytes whole(crops ? row * heif().height : 0);
    avifRGBImage rgb;
    avifRGBImageSetDefaults(&rgb, &image);
    rgb.depth = layout.bitsPerComponent;
    rgb.format = AVIF_RGB_FORMAT_RGBA;
    rgb.alphaPremultiplied = image.alphaPremultiplied;
    rgb.avoidLibYUV = AVIF_TRUE;  // its shorter numbers err by more than a step
    rgb.pixels = crops ? whole.data() : memory.data();
    rgb.rowBytes = static_cast<std::uint32_t>(row);
    if (avifImageYUVToRGB(&image, &rgb) != AVIF_RESULT_OK) return false;
    for (std::uint32_t y = 0; crops && y < layout.height; ++y)
      std::memcpy(memory.data() + y * layout.bytesPerRow, whole.data() + (y + crop.y) * row + crop.x * pixel,
                  layout.bytesPerRow);
    return true;
  }

  bool copyGray(const avifImage& image, const Layout& layout, PixelMemory& memory) const {
    const WideSamples gray(image.depth, layout.bitsPerComponent, image.yuvRange == AVIF_RANGE_LIMITED);
    copySamples(image.yuvPlanes[AVIF_CHAN_Y], image.yuvRowBytes[AVIF_CHAN_Y], gray, layout, memory.data());
    if (image.alphaPlane == nullptr) return true;
    const WideSamples alpha(image.depth, layout.bitsPerComponent);
    copySamples(image.alphaPlane, image.alphaRowBytes, alpha, layout,
                memory.data() + layout.bitsPerComponent / 8);
    return true;
  }

  void copySamples(const std::uint8_t* plane, std::size_t stride, const WideSamples& values,
                   const Layout& layout, std::uint8_t* to) const {
    const HeifCrop& crop = heif().transforms.crop;
    const std::uint8_t* from = plane + crop.y * stride + crop.x * (heif().bits > 8 ? 2u : 1u);
    for (std::uint32_t y = 0; y < layout.height; ++y)
      values.spread(from + y * stride, layout.width, to + y * layout.bytesPerRow, layout.bitsPerPixel / 8u);
  }
};

Answer<std::unique_ptr<CodecReader>> open(FileBytes file, std::string_view type) {
  auto heif = readHeifFile(file);
  if (!heif) return Fault{FaultKind::damaged};
  return std::make_unique<AvifReader>(file, std::move(*heif), type);
}

}  // namespace

Answer<std::unique_ptr<CodecReader>> openAvif(FileBytes file, const Limits&) {
  return open(file, "public.avif");
}
Answer<std::unique_ptr<CodecReader>> openAvis(FileBytes file, const Limits&) {
  return open(file, "public.avis");
}

}  // namespace ostra
