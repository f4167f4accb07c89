#include <algorithm>
#include <array>

#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/gif.h"
#include "platform/imageio/codecs/hdr.h"
#include "platform/imageio/codecs/jpeg.h"
#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/psd.h"
#include "platform/imageio/codecs/signatures.h"

namespace ostra {
namespace {

constexpr std::array kFormats{
    Codec{"public.png", "PNG", "the frames of an animation", true, matchesPng, {openPng, encodePng}},
    Codec{"public.jpeg", "JPEG", "full views", true, matchesJpeg, {openJpeg, encodeJpeg}},
    Codec{"com.compuserve.gif", "GIF", "the frames of an animation", true, matchesGif, {openGif, encodeGif}},
    Codec{"com.adobe.photoshop-image", "Photoshop", "one", false, matchesPsd, {openPsd, nullptr}},
    Codec{"public.radiance", "Radiance HDR", "one", false, matchesHdr, {openHdr, nullptr}},
    Codec{"public.heic", "HEIC", "the pictures that stand for themselves", true, matchesHeic, {}, "heif"},
    Codec{"public.heics", "HEIC sequence", "the pictures of the sequence", false, matchesHeics, {}, "heif"},
    Codec{"public.avif", "AVIF", "the pictures that stand for themselves", true, matchesAvif, {}, "avif"},
    Codec{"public.avis", "AVIF sequence", "the pictures of the sequence", false, matchesAvis, {}, "avif"},
    Codec{"public.heif", "HEIF", "the pictures that stand for themselves", false, matchesHeif, {}, "heif"},
    Codec{"org.webmproject.webp", "WebP", "the frames of an animation", false, matchesWebp, {}, "webp"},
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
