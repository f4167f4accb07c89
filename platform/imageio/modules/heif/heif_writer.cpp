#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "platform/imageio/codecs/heif_turned.h"
#include "platform/imageio/codecs/heif_written.h"
#include "platform/imageio/modules/heif/heif.h"
#include "platform/imageio/modules/heif/heif_planes.h"

namespace ostra {
namespace {

/// One thread, and a checksum with the picture, by which a reader sees damage that the coding hides.
constexpr std::array<std::pair<const char*, const char*>, 5> kSettings = {{
    {"preset", "veryfast"},
    {"x265:pools", "none"},
    {"x265:frame-threads", "1"},
    {"x265:wpp", "0"},
    {"x265:hash", "1"},
}};

HeifEncoder encoderFor(heif_context* context, const HeifWritten& written) {
  heif_encoder* made = nullptr;
  if (!succeeded(heif_context_get_encoder_for_format(context, heif_compression_HEVC, &made))) return nullptr;
  HeifEncoder encoder(made);
  if (!succeeded(heif_encoder_set_lossy_quality(made, written.quality))) return nullptr;
  for (const auto& [name, value] : kSettings) {
    if (!succeeded(heif_encoder_set_parameter(made, name, value))) return nullptr;
  }
  return encoder;
}

bool stateColour(heif_image* image, const HeifWritten& written) {
  const HeifNumbers numbers(heif_nclx_color_profile_alloc());
  if (numbers == nullptr) return false;
  numbers->color_primaries = static_cast<heif_color_primaries>(written.primaries);
  numbers->transfer_characteristics = static_cast<heif_transfer_characteristics>(written.transfer);
  numbers->matrix_coefficients = heif_matrix_coefficients_ITU_R_BT_601_6;
  numbers->full_range_flag = 1;
  if (!succeeded(heif_image_set_nclx_color_profile(image, numbers.get()))) return false;
  return written.profile.empty() || succeeded(heif_image_set_raw_color_profile(
                                        image, "prof", written.profile.data(), written.profile.size()));
}

bool addMetadata(heif_context* context, const heif_image_handle* picture, const HeifWritten& written) {
  const auto size = [](const Bytes& block) { return static_cast<int>(block.size()); };
  return (written.exif.empty() || succeeded(heif_context_add_exif_metadata(
                                      context, picture, written.exif.data(), size(written.exif)))) &&
         (written.xmp.empty() ||
          succeeded(heif_context_add_XMP_metadata(context, picture, written.xmp.data(), size(written.xmp))));
}

bool encodeInto(heif_context* context, heif_image* image, const HeifWritten& written) {
  const HeifEncoder encoder = encoderFor(context, written);
  if (encoder == nullptr) return false;
  if (!succeeded(heif_context_encode_image(context, image, encoder.get(), nullptr, nullptr))) return false;
  // Of an odd size, what was encoded is a part of the picture: metadata describes the whole.
  heif_image_handle* handle = nullptr;
  if (!succeeded(heif_context_get_primary_image_handle(context, &handle))) return false;
  const HeifHandle picture(handle);
  return addMetadata(context, picture.get(), written);
}

heif_error keep(heif_context*, const void* data, std::size_t size, void* file) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  try {
    static_cast<Bytes*>(file)->assign(bytes, bytes + size);
  } catch (const std::bad_alloc&) {
    return {heif_error_Memory_allocation_error, heif_suberror_Unspecified, "no memory"};
  }
  return {heif_error_Ok, heif_suberror_Unspecified, "kept"};
}

}  // namespace

Answer<Bytes> encodeHeic(const Pixels& pixels, const Properties* properties) {
  const auto written = heifToWrite(pixels, properties);
  if (!written) return Fault{FaultKind::damaged};
  StraightRows rows(pixels);
  const bool alpha = rows.alpha() == CGImageAlphaInfo::last;
  const HeifContext context(heif_context_alloc());
  HeifImage image = heifPlanes(pixels.layout, rows);
  if (context == nullptr || image == nullptr) throw std::bad_alloc();
  if (!stateColour(image.get(), *written) || !encodeInto(context.get(), image.get(), *written))
    return Fault{FaultKind::damaged};
  image.reset();
  Bytes file;
  heif_writer writer{1, keep};
  if (!succeeded(heif_context_write(context.get(), &writer, &file))) return Fault{FaultKind::damaged};
  auto turned = withHeifTurn(file, heifTurn(written->orientation));
  if (!turned || !heifTells(*turned, pixels, *written, alpha)) return Fault{FaultKind::damaged};
  return std::move(*turned);
}

}  // namespace ostra
