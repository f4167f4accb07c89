#include "platform/imageio/metadata/tiff_storage_tags.h"

#include <algorithm>
#include <array>

namespace ostra {
namespace {

struct Tags {
  std::uint16_t first, last;
};

constexpr std::array kStorage = {
    Tags{254, 259},      // kind, size, bits, compression
    Tags{262, 266},      // photometry, halftones, order of bits
    Tags{273, 273},      // strips
    Tags{277, 281},      // samples, rows and bytes of strips, extremes
    Tags{284, 284},      // planes
    Tags{288, 293},      // free room, gray response, facsimile
    Tags{300, 301},      // transfer curves
    Tags{317, 334},      // predictor, white, primaries, palette, tiles, directories below, inks
    Tags{336, 336},      // dot range
    Tags{338, 342},      // extra samples, sample format, range
    Tags{346, 347},      // indexed, JPEG tables
    Tags{351, 351},      // a proxy of the picture
    Tags{400, 405},      // facsimile profiles
    Tags{433, 435},      // mixed raster contents
    Tags{512, 521},      // old JPEG
    Tags{529, 532},      // YCbCr
    Tags{559, 559},      // rows of strips
    Tags{700, 700},      // XMP
    Tags{32995, 32998},  // older names of some of these
    Tags{33421, 33422},  // colour filter
    Tags{33723, 33723},  // IPTC
    Tags{34377, 34377},  // Photoshop's resources
    Tags{34675, 34675},  // the profile
    Tags{37439, 37439},  // what LogLuv is counted in
    Tags{37724, 37724},  // Photoshop's layers
    Tags{50674, 50674},  // LERC
    Tags{50706, 50707},  // DNG: raw pixels and how to develop them, but for the names of camera and lens
    Tags{50710, 50734}, Tags{50737, 51199}, Tags{52525, 52556},
};

}  // namespace

bool speaksOfStorage(std::uint16_t tag) {
  return std::any_of(kStorage.begin(), kStorage.end(),
                     [tag](const Tags& tags) { return tags.first <= tag && tag <= tags.last; });
}

}  // namespace ostra
