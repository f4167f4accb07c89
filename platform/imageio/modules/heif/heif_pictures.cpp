#include "platform/imageio/modules/heif/heif_pictures.h"

namespace ostra {

HeifPlane planeOf(heif_image* image, heif_channel channel) {
  if (heif_image_has_channel(image, channel) == 0) return {};
  HeifPlane plane;
  int stride = 0;
  plane.data = heif_image_get_plane(image, channel, &stride);
  plane.stride = static_cast<std::size_t>(stride);
  plane.width = static_cast<unsigned>(heif_image_get_width(image, channel));
  plane.height = static_cast<unsigned>(heif_image_get_height(image, channel));
  plane.bits = static_cast<unsigned>(heif_image_get_bits_per_pixel_range(image, channel));
  return plane;
}

HeifPlane addPlane(heif_image* image, heif_channel channel, unsigned width, unsigned height, unsigned bits) {
  const heif_error error = heif_image_add_plane(image, channel, static_cast<int>(width),
                                                static_cast<int>(height), static_cast<int>(bits));
  return succeeded(error) ? planeOf(image, channel) : HeifPlane();
}

}  // namespace ostra
