#include "platform/imageio/modules/jpeg2000/opj_encode.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <new>

namespace ostra {
namespace {

// A tile's part tells its length in 32 bits, and readers keep a tile at once.
constexpr std::uint32_t kTileSide = 4096;

struct Channels {
  unsigned colours, all, step;

  Channels(const Layout& layout, CGImageAlphaInfo alpha)
      : colours(layout.model == CGColorSpaceModel::monochrome ? 1 : 3),
        all(colours + (alpha == CGImageAlphaInfo::last ? 1 : 0)),
        step(colours + (alpha == CGImageAlphaInfo::none ? 0 : 1)) {}
};

OpjImage emptyImage(const Layout& layout, const Channels& channels) {
  std::array<opj_image_cmptparm_t, 4> components{};
  for (opj_image_cmptparm_t& component : components) {
    component.dx = component.dy = 1;
    component.w = layout.width;
    component.h = layout.height;
    component.prec = layout.bitsPerComponent;
  }
  OpjImage image(opj_image_create(channels.all, components.data(),
                                  channels.colours == 1 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB));
  if (image == nullptr) throw std::bad_alloc();
  image->x1 = layout.width;
  image->y1 = layout.height;
  return image;
}

template <class Sample>
void takeRow(const std::uint8_t* row, std::uint32_t y, const Channels& channels, opj_image_t& image) {
  for (unsigned c = 0; c < channels.all; ++c) {
    const opj_image_comp_t& component = image.comps[c];
    OPJ_INT32* const to = component.data + std::size_t{y} * component.w;
    for (std::size_t x = 0; x < component.w; ++x) {
      Sample sample{};
      std::memcpy(&sample, row + (x * channels.step + c) * sizeof sample, sizeof sample);
      to[x] = sample;
    }
  }
}

opj_cparameters_t parametersFor(const Layout& layout, const Channels& channels) {
  opj_cparameters_t parameters;
  opj_set_default_encoder_parameters(&parameters);
  parameters.irreversible = 0;
  parameters.cp_disto_alloc = 1;
  parameters.tcp_numlayers = 1;
  parameters.tcp_rates[0] = 0;  // everything
  parameters.tcp_mct = channels.colours == 3 ? 1 : 0;
  // Each level halves the picture; a pixel cannot be halved.
  constexpr int kMostLevels = 6;
  parameters.numresolution =
      std::min(kMostLevels, static_cast<int>(std::bit_width(std::min(layout.width, layout.height))));
  if (std::max(layout.width, layout.height) > kTileSide) {
    parameters.tile_size_on = OPJ_TRUE;
    parameters.cp_tdx = parameters.cp_tdy = kTileSide;
  }
  return parameters;
}

}  // namespace

bool encodeCodestream(const Layout& layout, StraightRows& rows, OpjOutput& output) {
  const Channels channels(layout, rows.alpha());
  const OpjImage image = emptyImage(layout, channels);
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    layout.bitsPerComponent == 8 ? takeRow<std::uint8_t>(rows.row(y), y, channels, *image)
                                 : takeRow<std::uint16_t>(rows.row(y), y, channels, *image);
  }
  opj_cparameters_t parameters = parametersFor(layout, channels);
  OpjComplaints complaints;
  const OpjCodec codec(opj_create_compress(OPJ_CODEC_J2K));
  const OpjStream stream = openForWriting(output);
  if (codec == nullptr || stream == nullptr) throw std::bad_alloc();
  listenTo(codec.get(), complaints);
  const bool done = opj_setup_encoder(codec.get(), &parameters, image.get()) == OPJ_TRUE &&
                    // Its own choice follows the environment.
                    opj_codec_set_threads(codec.get(), 0) == OPJ_TRUE &&
                    opj_start_compress(codec.get(), image.get(), stream.get()) == OPJ_TRUE &&
                    opj_encode(codec.get(), stream.get()) == OPJ_TRUE &&
                    opj_end_compress(codec.get(), stream.get()) == OPJ_TRUE;
  if (complaints.lacksMemory || output.lacksMemory) throw std::bad_alloc();
  return done;
}

}  // namespace ostra
