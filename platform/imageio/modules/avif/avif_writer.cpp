#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include <avif/avif.h>

#include "platform/imageio/codecs/heif_transforms.h"
#include "platform/imageio/codecs/heif_written.h"
#include "platform/imageio/modules/avif/avif.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {
namespace {

constexpr int kSpeed = 8;

struct DestroyImage {
  void operator()(avifImage* image) const { avifImageDestroy(image); }
};
using Image = std::unique_ptr<avifImage, DestroyImage>;

struct DestroyEncoder {
  void operator()(avifEncoder* encoder) const { avifEncoderDestroy(encoder); }
};
using Encoder = std::unique_ptr<avifEncoder, DestroyEncoder>;

struct EncodedFile {
  avifRWData data = AVIF_DATA_EMPTY;
  ~EncodedFile() { avifRWDataFree(&data); }
};

/// The library's 0 is without loss, its 63 the worst.
int quantizer(int quality) { return ((100 - quality) * 63 + 50) / 100; }

void stateColour(avifImage& image, const HeifWritten& written) {
  image.colorPrimaries = static_cast<avifColorPrimaries>(written.primaries);
  image.transferCharacteristics = static_cast<avifTransferCharacteristics>(written.transfer);
  image.matrixCoefficients = AVIF_MATRIX_COEFFICIENTS_BT601;
  image.yuvRange = AVIF_RANGE_FULL;
  avifImageSetProfileICC(&image, written.profile.data(), written.profile.size());
}

void stateOrientation(avifImage& image, int orientation) {
  const HeifTurn turn = heifTurn(orientation);
  if (turn.quarters != 0) image.transformFlags |= AVIF_TRANSFORM_IROT;
  image.irot.angle = turn.quarters;
  if (turn.mirror) image.transformFlags |= AVIF_TRANSFORM_IMIR;
  image.imir.mode = turn.mirror.value_or(0);
}

std::uint32_t sampleAt(const std::uint8_t* row, std::size_t index, bool words) {
  return words ? row[2 * index] | std::uint32_t{row[2 * index + 1]} << 8 : row[index];
}

/// One component of the rows as a plane of 8 or 12 bits.
void copyComponent(const std::uint8_t* row, std::size_t index, std::size_t samples, bool words,
                   std::uint8_t* plane, std::uint32_t width) {
  for (std::uint32_t x = 0; x < width; ++x, index += samples) {
    std::uint32_t value = sampleAt(row, index, words);
    if (!words) {
      plane[x] = static_cast<std::uint8_t>(value);
      continue;
    }
    value = (value * 4095 + 32767) / 65535;
    plane[2 * x] = static_cast<std::uint8_t>(value);
    plane[2 * x + 1] = static_cast<std::uint8_t>(value >> 8);
  }
}

void fillGray(avifImage& image, const Layout& layout, StraightRows& rows) {
  const bool words = layout.bitsPerComponent == 16;
  const std::size_t samples = layout.bitsPerPixel / layout.bitsPerComponent;
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    const std::uint8_t* row = rows.row(y);
    copyComponent(row, 0, samples, words, image.yuvPlanes[0] + std::size_t{y} * image.yuvRowBytes[0],
                  layout.width);
    if (image.alphaPlane != nullptr)
      copyComponent(row, 1, samples, words, image.alphaPlane + std::size_t{y} * image.alphaRowBytes,
                    layout.width);
  }
}

// A strip at a time: straight rows are not kept.
bool fillColour(avifImage& image, const Layout& layout, StraightRows& rows) {
  const Image strip(avifImageCreateEmpty());
  if (strip == nullptr) throw std::bad_alloc();
  const std::size_t samples = layout.bitsPerPixel / layout.bitsPerComponent;
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    const avifCropRect rect{0, y, layout.width, 1};
    if (avifImageSetViewRect(strip.get(), &image, &rect) != AVIF_RESULT_OK) return false;
    avifRGBImage rgb;
    avifRGBImageSetDefaults(&rgb, strip.get());
    rgb.depth = layout.bitsPerComponent;
    rgb.format = samples == 4 ? AVIF_RGB_FORMAT_RGBA : AVIF_RGB_FORMAT_RGB;
    rgb.ignoreAlpha = image.alphaPlane == nullptr;
    rgb.avoidLibYUV = AVIF_TRUE;
    rgb.pixels = const_cast<std::uint8_t*>(rows.row(y));
    rgb.rowBytes = static_cast<std::uint32_t>(layout.width * (layout.bitsPerPixel / 8u));
    const bool done = avifImageRGBToYUV(strip.get(), &rgb) == AVIF_RESULT_OK;
    // The library believes that it made planes which it was given.
    strip->imageOwnsYUVPlanes = strip->imageOwnsAlphaPlane = AVIF_FALSE;
    if (!done) return false;
  }
  return true;
}

Image imageOf(const Pixels& pixels, const HeifWritten& written, StraightRows& rows, bool alpha) {
  const Layout& layout = pixels.layout;
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  Image image(avifImageCreate(layout.width, layout.height, layout.bitsPerComponent == 16 ? 12 : 8,
                              gray ? AVIF_PIXEL_FORMAT_YUV400 : AVIF_PIXEL_FORMAT_YUV444));
  if (image == nullptr) throw std::bad_alloc();
  stateColour(*image, written);
  stateOrientation(*image, written.orientation);
  avifImageSetMetadataExif(image.get(), written.exif.data(), written.exif.size());
  avifImageSetMetadataXMP(image.get(), written.xmp.data(), written.xmp.size());
  const avifPlanesFlags planes = alpha ? AVIF_PLANES_ALL : AVIF_PLANES_YUV;
  if (avifImageAllocatePlanes(image.get(), planes) != AVIF_RESULT_OK) throw std::bad_alloc();
  if (!gray && !fillColour(*image, layout, rows)) return nullptr;
  if (gray) fillGray(*image, layout, rows);
  return image;
}

/// Opacity is kept without loss: a nearly opaque picture would show what is behind it.
Encoder encoderFor(const HeifWritten& written) {
  Encoder encoder(avifEncoderCreate());
  if (encoder == nullptr) throw std::bad_alloc();
  encoder->codecChoice = AVIF_CODEC_CHOICE_AOM;
  encoder->maxThreads = 1;
  encoder->speed = kSpeed;
  encoder->minQuantizer = encoder->maxQuantizer = quantizer(written.quality);
  encoder->minQuantizerAlpha = encoder->maxQuantizerAlpha = AVIF_QUANTIZER_LOSSLESS;
  return encoder;
}

}  // namespace

Answer<Bytes> encodeAvif(const Pixels& pixels, const Properties* properties) {
  const auto written = heifToWrite(pixels, properties);
  if (!written) return Fault{FaultKind::damaged};
  StraightRows rows(pixels);
  const bool alpha = rows.alpha() == CGImageAlphaInfo::last;
  const Image image = imageOf(pixels, *written, rows, alpha);
  EncodedFile file;
  const Encoder encoder = encoderFor(*written);
  if (image == nullptr || avifEncoderWrite(encoder.get(), image.get(), &file.data) != AVIF_RESULT_OK)
    return Fault{FaultKind::damaged};
  Bytes bytes(file.data.data, file.data.data + file.data.size);
  if (!heifTells(bytes, pixels, *written, alpha)) return Fault{FaultKind::damaged};
  return bytes;
}

}  // namespace ostra
