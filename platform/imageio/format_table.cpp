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

// Of TIFF files that cameras write, the reader tells whose they are: those rows have no signature of their
// own.
bool toldByItsReader(FileBytes) { return false; }

constexpr Codec cameraRaw(std::string_view type, std::string_view name,
                          bool (*matches)(FileBytes) = toldByItsReader) {
  return {type, name, "one", false, matches, {}, "raw"};
}

constexpr std::array kFormats{
    Codec{"public.png", "PNG", "the frames of an animation", true, matchesPng, {openPng, encodePng}},
    Codec{"public.jpeg", "JPEG", "full views", true, matchesJpeg, {openJpeg, encodeJpeg}},
    Codec{"com.compuserve.gif", "GIF", "the frames of an animation", true, matchesGif, {openGif, encodeGif}},
    Codec{"com.adobe.photoshop-image", "Photoshop", "one", false, matchesPsd, {openPsd, nullptr}},
    Codec{"public.radiance", "Radiance HDR", "one", false, matchesHdr, {openHdr, nullptr}},
    Codec{"public.jpeg-2000", "JPEG 2000", "codestreams", true, matchesJpeg2000, {}, "jpeg2000"},
    Codec{"public.jpeg-xl", "JPEG XL", "the frames of an animation", false, matchesJxl, {}, "jxl"},
    cameraRaw("com.canon.cr2-raw-image", "Canon CR2", matchesCr2),
    cameraRaw("com.canon.cr3-raw-image", "Canon CR3", matchesCr3),
    cameraRaw("com.canon.crw-raw-image", "Canon CRW", matchesCrw),
    cameraRaw("com.fuji.raw-image", "Fujifilm RAF", matchesRaf),
    cameraRaw("com.konicaminolta.raw-image", "Minolta MRW", matchesMrw),
    cameraRaw("com.olympus.raw-image", "Olympus ORF", matchesOrf),
    cameraRaw("com.panasonic.rw2-raw-image", "Panasonic RW2", matchesRw2),
    cameraRaw("com.leica.rwl-raw-image", "Leica RWL"),
    cameraRaw("com.adobe.raw-image", "DNG", matchesTiffRaw),
    cameraRaw("com.canon.tif-raw-image", "Canon TIF"),
    cameraRaw("com.epson.raw-image", "Epson ERF"),
    cameraRaw("com.hasselblad.3fr-raw-image", "Hasselblad 3FR"),
    cameraRaw("com.kodak.raw-image", "Kodak DCR"),
    cameraRaw("com.leafamerica.raw-image", "Leaf MOS"),
    cameraRaw("com.leica.raw-image", "Leica RAW"),
    cameraRaw("com.nikon.raw-image", "Nikon NEF"),
    cameraRaw("com.nikon.nrw-raw-image", "Nikon NRW"),
    cameraRaw("com.panasonic.raw-image", "Panasonic RAW"),
    cameraRaw("com.pentax.raw-image", "Pentax PEF"),
    cameraRaw("com.phaseone.raw-image", "Phase One IIQ"),
    cameraRaw("com.samsung.raw-image", "Samsung SRW"),
    cameraRaw("com.sony.arw-raw-image", "Sony ARW"),
    cameraRaw("com.sony.sr2-raw-image", "Sony SR2"),
    cameraRaw("com.sony.raw-image", "Sony SRF"),
    Codec{"public.tiff", "TIFF", "pages", true, matchesTiff, {}, "tiff"},
    Codec{"com.ilm.openexr-image", "OpenEXR", "parts", false, matchesExr, {}, "exr"},
    Codec{"public.heic", "HEIC", "the pictures that stand for themselves", true, matchesHeic, {}, "heif"},
    Codec{"public.heics", "HEIC sequence", "the pictures of the sequence", false, matchesHeics, {}, "heif"},
    Codec{"public.avif", "AVIF", "the pictures that stand for themselves", true, matchesAvif, {}, "avif"},
    Codec{"public.avis", "AVIF sequence", "the pictures of the sequence", false, matchesAvis, {}, "avif"},
    Codec{"public.heif", "HEIF", "the pictures that stand for themselves", false, matchesHeif, {}, "heif"},
    Codec{"org.webmproject.webp", "WebP", "the frames of an animation", false, matchesWebp, {}, "webp"},
    Codec{"com.microsoft.bmp", "BMP", "one", true, matchesBmp, {openBmp, encodeBmp}},
    Codec{"public.pbm",
          "PBM, PGM, PPM, PAM",
          "pictures one behind the other",
          true,
          matchesPnm,
          {openPnm, encodePnm}},
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
