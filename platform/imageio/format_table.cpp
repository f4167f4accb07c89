#include <algorithm>
#include <array>

#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/bmp.h"
#include "platform/imageio/codecs/ico.h"
#include "platform/imageio/codecs/jpeg.h"
#include "platform/imageio/codecs/png.h"
#include "platform/imageio/codecs/pnm.h"
#include "platform/imageio/codecs/tga.h"

namespace ostra {
namespace {

constexpr std::array kFormats{
    Codec{"public.png", matchesPng, openPng, encodePng},
    Codec{"public.jpeg", matchesJpeg, openJpeg, encodeJpeg},
    Codec{"com.microsoft.bmp", matchesBmp, openBmp, encodeBmp},
    Codec{"public.pbm", matchesPnm, openPnm, encodePnm},
    Codec{"com.microsoft.ico", matchesIco, openIco, encodeIco},
    Codec{"com.microsoft.cur", matchesCur, openCur, nullptr},
    // Without a signature: last, so that no other format is taken for it.
    Codec{"com.truevision.tga-image", matchesTga, openTga, encodeTga},
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
