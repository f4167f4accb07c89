#include <algorithm>
#include <array>

#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/bmp.h"
#include "platform/imageio/codecs/gif.h"
#include "platform/imageio/codecs/hdr.h"
#include "platform/imageio/codecs/ico.h"
#include "platform/imageio/codecs/jpeg.h"
#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/pnm.h"
#include "platform/imageio/codecs/psd.h"
#include "platform/imageio/codecs/signatures.h"
#include "platform/imageio/codecs/tga.h"

namespace ostra {
namespace {

constexpr std::array kFormats{
    Codec{"public.png", "PNG", "the frames of an animation", true, matchesPng, {openPng, encodePng}},
    Codec{"public.jpeg", "JPEG", "full views", true, matchesJpeg, {openJpeg, encodeJpeg}},
    Codec{"public.tiff", "TIFF", "pages", true, matchesTiff, {}, "tiff"},
    Codec{"com.compuserve.gif", "GIF", "the frames of an animation", true, matchesGif, {openGif, encodeGif}},
    Codec{"com.adobe.photoshop-image", "Photoshop", "one", false, matchesPsd, {openPsd, nullptr}},
    Codec{"public.radiance", "Radiance HDR", "one", false, matchesHdr, {openHdr, nullptr}},
    Codec{"public.jpeg-2000", "JPEG 2000", "codestreams", true, matchesJpeg2000, {}, "jpeg2000"},
    Codec{"public.jpeg-xl", "JPEG XL", "the frames of an animation", false, matchesJxl, {}, "jxl"},
    Codec{"org.webmproject.webp", "WebP", "the frames of an animation", false, matchesWebp, {}, "webp"},
    Codec{"com.microsoft.bmp", "BMP", "one", true, matchesBmp, {openBmp, encodeBmp}},
    Codec{"public.pbm", "PBM, PGM, PPM, PAM", "pictures one behind the other", true, matchesPnm, {openPnm, encodePnm}},
    Codec{"com.microsoft.ico", "ICO", "sizes of the icon", true, matchesIco, {openIco, encodeIco}},
    Codec{"com.microsoft.cur", "CUR", "sizes of the cursor", false, matchesCur, {openCur, nullptr}},
    // Without a signature: last, so that no other format is taken for it.
    Codec{"com.truevision.tga-image", "TGA", "one", true, matchesTga, {openTga, encodeTga}},
};

template <class Condition>
const Codec* firstWhere(Condition holds) {
  const auto found = std::find_if(kFormats.begin(), kFormats.end(), holds);
  return found == kFormats.end() ? nullptr : &*found;
}

}  // namespace

std::span<const Codec> allCodecs() { return kFormats; }

const Codec* codecForBytes(FileBytes head) {
  return firstWhere([head](const Codec& codec) { return codec.matches(head); });
}

const Codec* codecForType(std::string_view type) {
  return firstWhere([type](const Codec& codec) { return codec.type == type; });
}

}  // namespace ostra
