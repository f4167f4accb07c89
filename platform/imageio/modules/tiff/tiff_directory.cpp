#include "platform/imageio/modules/tiff/tiff_directory.h"

namespace ostra {
namespace {

std::uint16_t shortField(const TiffFile& file, std::uint32_t tag, std::uint16_t otherwise = 0) {
  return file.field<std::uint16_t>(tag, otherwise);
}

/// As the library takes it where the directory does not say.
std::uint16_t photometryOf(const TiffFile& file, const TiffDirectory& directory) {
  std::uint16_t photometry = 0;
  if (TIFFGetField(file.get(), TIFFTAG_PHOTOMETRIC, &photometry) != 0) return photometry;
  if (directory.samples >= 3) return PHOTOMETRIC_RGB;
  const bool isFacsimile =
      directory.compression >= COMPRESSION_CCITTRLE && directory.compression <= COMPRESSION_CCITTFAX4;
  return isFacsimile || directory.compression == COMPRESSION_CCITTRLEW ? PHOTOMETRIC_MINISWHITE
                                                                       : PHOTOMETRIC_MINISBLACK;
}

TiffColour colourOf(const TiffFile& file, const TiffDirectory& directory) {
  switch (directory.photometry) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
      return TiffColour::gray;
    case PHOTOMETRIC_RGB:
      return TiffColour::rgb;
    case PHOTOMETRIC_PALETTE:
      return TiffColour::palette;
    case PHOTOMETRIC_SEPARATED:
      return shortField(file, TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK ? TiffColour::cmyk
                                                                          : TiffColour::other;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
      return TiffColour::lab;
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      return TiffColour::light;
    case PHOTOMETRIC_YCBCR:
      // Subsampled colours come back whole from JPEG alone.
      return directory.compression == COMPRESSION_JPEG && !directory.separatePlanes ? TiffColour::rgb
                                                                                    : TiffColour::other;
    default:
      return TiffColour::other;
  }
}

/// An extra sample of unknown meaning is no alpha: what it holds may be anything.
void readAlpha(const TiffFile& file, TiffDirectory& directory) {
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  if (TIFFGetFieldDefaulted(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0 || kinds == nullptr)
    return;
  for (std::uint16_t i = 0; i < count; ++i) {
    const auto place = static_cast<std::uint16_t>(directory.colours() + i);
    if (place >= directory.samples ||
        (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA))
      continue;
    directory.alpha = kinds[i] == EXTRASAMPLE_ASSOCALPHA ? TiffAlpha::premultiplied : TiffAlpha::straight;
    directory.alphaSample = place;
    return;
  }
}

/// As light in floating point, whatever the directory says of its samples.
bool askForLight(const TiffFile& file, TiffDirectory& directory) {
  const bool isLog =
      directory.compression == COMPRESSION_SGILOG || directory.compression == COMPRESSION_SGILOG24;
  if (!isLog || directory.separatePlanes ||
      TIFFSetField(file.get(), TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT) == 0)
    return false;
  directory.bits = 32;
  directory.format = SAMPLEFORMAT_IEEEFP;
  directory.samples = directory.photometry == PHOTOMETRIC_LOGL ? 1 : 3;
  return true;
}

bool samplesAreKnown(const TiffDirectory& directory) {
  const std::uint16_t bits = directory.bits;
  switch (directory.colour) {
    case TiffColour::palette:
      return bits <= 16 && directory.format == SAMPLEFORMAT_UINT;
    case TiffColour::lab:
      return (bits == 8 || bits == 16) && !directory.isReal();
    default:
      return directory.isReal() ? bits == 16 || bits == 32 || bits == 64 : bits >= 1 && bits <= 64;
  }
}

}  // namespace

std::uint16_t TiffDirectory::colours() const {
  switch (colour) {
    case TiffColour::gray:
    case TiffColour::palette:
      return 1;
    case TiffColour::light:
      return photometry == PHOTOMETRIC_LOGL ? 1 : 3;
    case TiffColour::cmyk:
      return 4;
    default:
      return 3;
  }
}

CGColorSpaceModel TiffDirectory::model() const {
  if (colour == TiffColour::cmyk) return CGColorSpaceModel::cmyk;
  const bool gray = colour == TiffColour::gray || (colour == TiffColour::light && colours() == 1);
  return gray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
}

std::optional<TiffDirectory> readTiffDirectory(const TiffFile& file) {
  TiffDirectory directory;
  directory.width = file.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH);
  directory.height = file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH);
  directory.bits = shortField(file, TIFFTAG_BITSPERSAMPLE, 1);
  directory.samples = shortField(file, TIFFTAG_SAMPLESPERPIXEL, 1);
  directory.format = shortField(file, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  if (directory.format == SAMPLEFORMAT_VOID) directory.format = SAMPLEFORMAT_UINT;
  directory.compression = shortField(file, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  directory.photometry = photometryOf(file, directory);
  directory.separatePlanes =
      shortField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  directory.tiled = TIFFIsTiled(file.get()) != 0;
  directory.colour = colourOf(file, directory);
  if (directory.width == 0 || directory.height == 0 || directory.samples == 0) return std::nullopt;
  if (directory.colour == TiffColour::other) return directory;
  if (directory.colour == TiffColour::light && !askForLight(file, directory)) return std::nullopt;
  const bool known =
      directory.isReal() || directory.format == SAMPLEFORMAT_UINT || directory.format == SAMPLEFORMAT_INT;
  if (!known || !samplesAreKnown(directory) || directory.samples < directory.colours()) return std::nullopt;
  if (directory.compression == COMPRESSION_JPEG)
    TIFFSetField(file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  readAlpha(file, directory);
  return directory;
}

}  // namespace ostra
