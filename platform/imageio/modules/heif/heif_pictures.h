#pragma once
#include <memory>

#include <libheif/heif.h>

namespace ostra {

template <auto release>
struct ReleaseWith {
  template <class T>
  void operator()(T* thing) const {
    release(thing);
  }
};

using HeifContext = std::unique_ptr<heif_context, ReleaseWith<heif_context_free>>;
using HeifHandle = std::unique_ptr<heif_image_handle, ReleaseWith<heif_image_handle_release>>;
using HeifImage = std::unique_ptr<heif_image, ReleaseWith<heif_image_release>>;
using HeifDecodingOptions = std::unique_ptr<heif_decoding_options, ReleaseWith<heif_decoding_options_free>>;
using HeifEncoder = std::unique_ptr<heif_encoder, ReleaseWith<heif_encoder_release>>;
using HeifNumbers = std::unique_ptr<heif_color_profile_nclx, ReleaseWith<heif_nclx_color_profile_free>>;

inline bool succeeded(const heif_error& error) { return error.code == heif_error_Ok; }

/// A plane of a picture of the library.
struct HeifPlane {
  std::uint8_t* data = nullptr;
  std::size_t stride = 0;
  unsigned width = 0, height = 0, bits = 0;
};
/// Without data when the picture has no such plane.
HeifPlane planeOf(heif_image* image, heif_channel channel);
/// A new plane of the picture; without data when there is not the memory.
HeifPlane addPlane(heif_image* image, heif_channel channel, unsigned width, unsigned height, unsigned bits);

}  // namespace ostra
