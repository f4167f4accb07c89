#pragma once
#include <array>
#include <cstddef>
#include <string_view>

namespace ostra {

/// One declared type. `parents`, `extensions` and `mimeTypes` are lists separated by single blanks, so that
/// the table can be constant; the preferred entry comes first. A type of no parent is a root.
struct TypeRow {
  std::string_view identifier;
  std::string_view parents;
  std::string_view extensions;
  std::string_view mimeTypes;
};

// Where two types claim an extension, the earlier row has it.
inline constexpr std::array kTypeTable{
    TypeRow{"public.item", "", "", ""},
    TypeRow{"public.content", "", "", ""},
    TypeRow{"public.data", "public.item", "", "application/octet-stream"},
    TypeRow{"public.url", "public.data", "", ""},
    TypeRow{"public.file-url", "public.url", "", ""},
    TypeRow{"public.text", "public.data public.content", "", ""},
    TypeRow{"public.xml", "public.text", "xml", "application/xml text/xml"},
    TypeRow{"public.composite-content", "public.content", "", ""},
    TypeRow{"public.image", "public.data public.content", "", ""},
    TypeRow{"public.camera-raw-image", "public.image", "", ""},
    TypeRow{"public.heif-standard", "public.image", "", ""},

    TypeRow{"public.png", "public.image", "png", "image/png"},
    TypeRow{"public.jpeg", "public.image", "jpeg jpg jpe jfif", "image/jpeg image/jpg"},
    TypeRow{"public.mpo-image", "public.image", "mpo", "image/mpo"},
    TypeRow{"public.tiff", "public.image", "tiff tif", "image/tiff"},
    TypeRow{"com.compuserve.gif", "public.image", "gif", "image/gif"},
    TypeRow{"com.microsoft.bmp", "public.image", "bmp dib", "image/bmp"},
    TypeRow{"com.microsoft.ico", "public.image", "ico", "image/vnd.microsoft.icon image/x-icon"},
    TypeRow{"com.microsoft.cur", "public.image", "cur", "image/x-win-bitmap"},
    TypeRow{"com.apple.icns", "public.image", "icns", "image/x-icns"},
    TypeRow{"org.webmproject.webp", "public.image", "webp", "image/webp"},
    TypeRow{"public.heic", "public.heif-standard", "heic", "image/heic"},
    TypeRow{"public.heif", "public.heif-standard", "heif hif", "image/heif"},
    TypeRow{"public.heics", "public.heif-standard", "heics", "image/heic-sequence"},
    TypeRow{"public.avci", "public.heif-standard", "avci", "image/avci"},
    TypeRow{"public.avif", "public.heif-standard", "avif", "image/avif"},
    TypeRow{"public.avis", "public.heif-standard", "avifs", "image/avif-sequence"},
    TypeRow{"public.jpeg-2000", "public.image", "jp2 jpf jpx j2k j2c",
            "image/jp2 image/jpx image/x-jp2-codestream"},
    TypeRow{"public.jpeg-xl", "public.image", "jxl", "image/jxl"},
    TypeRow{"com.adobe.photoshop-image", "public.image", "psd psb", "image/vnd.adobe.photoshop"},
    TypeRow{"com.truevision.tga-image", "public.image", "tga", "image/x-tga image/targa"},
    TypeRow{"com.ilm.openexr-image", "public.image", "exr", "image/x-exr"},
    TypeRow{"public.radiance", "public.image", "hdr pic", "image/vnd.radiance image/x-hdr"},
    TypeRow{
        "public.pbm", "public.image", "pbm pgm ppm pnm",
        "image/x-portable-bitmap image/x-portable-graymap image/x-portable-pixmap image/x-portable-anymap"},
    TypeRow{"public.pvr", "public.image", "pvr", ""},
    TypeRow{"com.microsoft.dds", "public.image", "dds", "image/vnd.ms-dds"},
    TypeRow{"org.khronos.ktx", "public.image", "ktx", "image/ktx"},
    TypeRow{"org.khronos.ktx2", "public.image", "ktx2", "image/ktx2"},
    TypeRow{"org.khronos.astc", "public.image", "astc", "image/astc"},
    TypeRow{"com.apple.atx", "public.image", "", ""},
    TypeRow{"com.sgi.sgi-image", "public.image", "sgi rgb bw", "image/x-sgi"},
    TypeRow{"com.apple.pict", "public.image", "pict pct pic", "image/x-pict"},
    TypeRow{"com.adobe.pdf", "public.data public.composite-content", "pdf", "application/pdf"},
    TypeRow{"public.svg-image", "public.image public.xml", "svg svgz", "image/svg+xml"},
    TypeRow{"org.nema.dicom", "public.data", "dcm dicom", "application/dicom"},

    TypeRow{"com.adobe.raw-image", "public.camera-raw-image", "dng", "image/x-adobe-dng"},
    TypeRow{"com.apple.proraw", "public.camera-raw-image", "dng", "image/x-adobe-dng"},
    TypeRow{"com.canon.cr2-raw-image", "public.camera-raw-image", "cr2", "image/x-canon-cr2"},
    TypeRow{"com.canon.cr3-raw-image", "public.camera-raw-image", "cr3", "image/x-canon-cr3"},
    TypeRow{"com.canon.crw-raw-image", "public.camera-raw-image", "crw", "image/x-canon-crw"},
    TypeRow{"com.canon.tif-raw-image", "public.camera-raw-image", "tif", ""},
    TypeRow{"com.dxo.raw-image", "public.camera-raw-image", "dng", "image/x-adobe-dng"},
    TypeRow{"com.epson.raw-image", "public.camera-raw-image", "erf", ""},
    TypeRow{"com.fuji.raw-image", "public.camera-raw-image", "raf", "image/x-fuji-raf"},
    TypeRow{"com.hasselblad.3fr-raw-image", "public.camera-raw-image", "3fr", ""},
    TypeRow{"com.hasselblad.fff-raw-image", "public.camera-raw-image", "fff", ""},
    TypeRow{"com.kodak.raw-image", "public.camera-raw-image", "dcr", "image/x-kodak-dcr"},
    TypeRow{"com.konicaminolta.raw-image", "public.camera-raw-image", "mrw", "image/x-minolta-mrw"},
    TypeRow{"com.leafamerica.raw-image", "public.camera-raw-image", "mos", ""},
    TypeRow{"com.nikon.raw-image", "public.camera-raw-image", "nef", "image/x-nikon-nef"},
    TypeRow{"com.nikon.nrw-raw-image", "public.camera-raw-image", "nrw", "image/x-nikon-nrw"},
    TypeRow{"com.olympus.raw-image", "public.camera-raw-image", "orf", "image/x-olympus-orf"},
    TypeRow{"com.olympus.or-raw-image", "public.camera-raw-image", "orf", "image/x-olympus-orf"},
    TypeRow{"com.olympus.sr-raw-image", "public.camera-raw-image", "orf", "image/x-olympus-orf"},
    TypeRow{"com.panasonic.raw-image", "public.camera-raw-image", "raw", "image/x-panasonic-rw"},
    TypeRow{"com.panasonic.rw2-raw-image", "public.camera-raw-image", "rw2", "image/x-panasonic-rw2"},
    TypeRow{"com.pentax.raw-image", "public.camera-raw-image", "pef", "image/x-pentax-pef"},
    TypeRow{"com.phaseone.raw-image", "public.camera-raw-image", "iiq", ""},
    TypeRow{"com.samsung.raw-image", "public.camera-raw-image", "srw", ""},
    TypeRow{"com.sony.raw-image", "public.camera-raw-image", "srf", "image/x-sony-srf"},
    TypeRow{"com.sony.sr2-raw-image", "public.camera-raw-image", "sr2", "image/x-sony-sr2"},
    TypeRow{"com.sony.arw-raw-image", "public.camera-raw-image", "arw", "image/x-sony-arw"},
    TypeRow{"com.sony.axr-raw-image", "public.camera-raw-image", "axr", ""},
    TypeRow{"com.leica.raw-image", "public.camera-raw-image", "raw", ""},
    TypeRow{"com.leica.rwl-raw-image", "public.camera-raw-image", "rwl", ""},
};

/// Calls `visit` with each word of a list; stops, and answers true, when it answers true.
template <class Visitor>
constexpr bool anyWord(std::string_view list, const Visitor& visit) {
  while (!list.empty()) {
    const std::size_t end = list.find(' ');
    if (visit(list.substr(0, end))) return true;
    list = end == std::string_view::npos ? std::string_view() : list.substr(end + 1);
  }
  return false;
}

/// The row of an identifier written exactly so; the table's size when there is none.
constexpr std::size_t typeRow(std::string_view identifier) {
  std::size_t row = 0;
  while (row < kTypeTable.size() && kTypeTable[row].identifier != identifier) ++row;
  return row;
}

}  // namespace ostra
