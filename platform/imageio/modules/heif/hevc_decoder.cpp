#include "platform/imageio/modules/heif/hevc_decoder.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include <libde265/de265.h>
#include <libheif/heif_plugin.h>

#include "platform/imageio/codecs/bmff_boxes.h"
#include "platform/imageio/modules/heif/heif_pictures.h"

namespace ostra {
namespace {

constexpr int kApiVersion = 3;
constexpr int kBeforeAllOthers = 1000;
constexpr heif_error kDone{heif_error_Ok, heif_suberror_Unspecified, "done"};
constexpr heif_error kDamaged{heif_error_Decoder_plugin_error, heif_suberror_Unspecified, "damaged"};

const char* name() { return "checking HEVC decoder"; }
void nothing() {}
void ignoreStrictness(void*, int) {}

int priority(heif_compression_format format) {
  return format == heif_compression_HEVC ? kBeforeAllOthers : 0;
}

heif_error create(void** decoder) {
  *decoder = de265_new_decoder();
  if (*decoder == nullptr) return kDamaged;
  de265_set_parameter_bool(*decoder, DE265_DECODER_PARAM_BOOL_SEI_CHECK_HASH, 1);
  return kDone;
}

void destroy(void* decoder) { de265_free_decoder(decoder); }

// Units with their length in front, in 32 bits whatever the file has.
heif_error push(void* decoder, const void* data, std::size_t size) {
  BmffFields fields({static_cast<const std::uint8_t*>(data), size});
  while (!fields.rest().empty()) {
    const std::uint32_t length = fields.number32();
    const ByteView rest = fields.rest();
    if (!fields.isIntact() || length > rest.size()) return kDamaged;
    if (de265_push_NAL(decoder, rest.data(), static_cast<int>(length), 0, nullptr) != DE265_OK)
      return kDamaged;
    fields = BmffFields(rest.subspan(length));
  }
  return kDone;
}

bool copyPlane(const de265_image* from, int index, heif_image* to, heif_channel channel) {
  int stride = 0;
  const std::uint8_t* rows = de265_get_image_plane(from, index, &stride);
  const auto width = static_cast<unsigned>(de265_get_image_width(from, index));
  const auto height = static_cast<unsigned>(de265_get_image_height(from, index));
  const auto bits = static_cast<unsigned>(de265_get_bits_per_pixel(from, index));
  const HeifPlane plane = addPlane(to, channel, width, height, bits);
  if (rows == nullptr || plane.data == nullptr) return false;
  const std::size_t size = std::size_t{width} * (bits > 8 ? 2 : 1);
  for (unsigned y = 0; y < height; ++y)
    std::memcpy(plane.data + y * plane.stride, rows + std::size_t{y} * static_cast<unsigned>(stride), size);
  return true;
}

// What the bitstream says of its colours; the file may say it too, which then holds.
void copyColour(const de265_image* from, heif_image* to) {
  const HeifNumbers numbers(heif_nclx_color_profile_alloc());
  if (numbers == nullptr) return;
  const auto unknown = [](int number) { return static_cast<std::uint16_t>(number); };
  heif_nclx_color_profile_set_color_primaries(numbers.get(), unknown(de265_get_image_colour_primaries(from)));
  heif_nclx_color_profile_set_transfer_characteristics(
      numbers.get(), unknown(de265_get_image_transfer_characteristics(from)));
  heif_nclx_color_profile_set_matrix_coefficients(numbers.get(),
                                                  unknown(de265_get_image_matrix_coefficients(from)));
  numbers->full_range_flag = de265_get_image_full_range_flag(from) != 0;
  heif_image_set_nclx_color_profile(to, numbers.get());
}

heif_chroma chromaOf(const de265_image* image) {
  switch (de265_get_chroma_format(image)) {
    case de265_chroma_mono:
      return heif_chroma_monochrome;
    case de265_chroma_420:
      return heif_chroma_420;
    case de265_chroma_422:
      return heif_chroma_422;
    default:
      return heif_chroma_444;
  }
}

HeifImage copyOf(const de265_image* image) {
  const heif_chroma chroma = chromaOf(image);
  const bool gray = chroma == heif_chroma_monochrome;
  heif_image* made = nullptr;
  const heif_error error =
      heif_image_create(de265_get_image_width(image, 0), de265_get_image_height(image, 0),
                        gray ? heif_colorspace_monochrome : heif_colorspace_YCbCr, chroma, &made);
  HeifImage copy(succeeded(error) ? made : nullptr);
  constexpr heif_channel kChannels[] = {heif_channel_Y, heif_channel_Cb, heif_channel_Cr};
  for (int i = 0; copy != nullptr && i < (gray ? 1 : 3); ++i) {
    if (!copyPlane(image, i, copy.get(), kChannels[i])) return nullptr;
  }
  if (copy != nullptr) copyColour(image, copy.get());
  return copy;
}

// Damage moves the place where a slice ends, so that the decoder warns of its end; libheif's own decoder asks
// for no warnings. A stream that decodes to other than one picture is no still.
heif_error decode(void* decoder, heif_image** picture) {
  *picture = nullptr;
  HeifImage found;
  int pictures = 0;
  de265_error error = de265_flush_data(decoder);
  for (int more = 1; more != 0 && error == DE265_OK;) {
    error = de265_decode(decoder, &more);
    while (const de265_image* image = de265_get_next_picture(decoder)) {
      if (++pictures == 1) found = copyOf(image);
    }
  }
  const bool warned = de265_get_warning(decoder) != DE265_OK;
  if (error != DE265_OK || warned || pictures != 1 || found == nullptr) return kDamaged;
  *picture = found.release();
  return kDone;
}

}  // namespace

bool registerHevcDecoder() {
  static constexpr heif_decoder_plugin plugin{
      kApiVersion, name, nothing, nothing, priority, create, destroy, push, decode, ignoreStrictness, "ostra",
  };
  return succeeded(heif_register_decoder_plugin(&plugin));
}

}  // namespace ostra
