#include "platform/imageio/modules/tiff/tiff_directory.h"

#include <algorithm>

namespace ostra {
namespace {

std::uint16_t shortField(const TiffFile& file, std::uint32_t tag, std::uint16_t otherwise = 0) {
  return file.field<std::uint16_t>(tag, otherwise);
}

/// Subsampled colours come back whole from JPEG alone.
TiffColour colourOf(std::uint16_t photometric, std::uint16_t compression, std::uint16_t inks) {
  switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
      return TiffColour::gray;
    case PHOTOMETRIC_RGB:
      return TiffColour::rgb;
    case PHOTOMETRIC_PALETTE:
      return TiffColour::palette;
    case PHOTOMETRIC_SEPARATED:
      return inks == INKSET_CMYK ? TiffColour::cmyk : TiffColour::other;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
      return TiffColour::lab;
    case PHOTOMETRIC_YCBCR:
      return compression == COMPRESSION_JPEG ? TiffColour::rgb : TiffColour::other;
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
    if (place >= directory.samples || directory.alpha != TiffAlpha::none) return;
    if (kinds[i] == EXTRASAMPLE_ASSOCALPHA) directory.alpha = TiffAlpha::premultiplied;
    if (kinds[i] == EXTRASAMPLE_UNASSALPHA) directory.alpha = TiffAlpha::straight;
    directory.alphaSample = place;
  }
}

bool depthIsKnown(const TiffDirectory& directory) {
  if (directory.format == SAMPLEFORMAT_IEEEFP)
    return directory.bits == 16 || directory.bits == 32 || directory.bits == 64;
  if (directory.format != SAMPLEFORMAT_UINT && directory.format != SAMPLEFORMAT_INT) return false;
  return directory.bits >= 1 && directory.bits <= 64;
}

}  // namespace

std::uint16_t TiffDirectory::colours() const {
  switch (colour) {
    case TiffColour::gray:
    case TiffColour::palette:
      return 1;
    case TiffColour::cmyk:
      return 4;
    default:
      return 3;
  }
}

CGColorSpaceModel TiffDirectory::model() const {
  if (colour == TiffColour::gray) return CGColorSpaceModel::monochrome;
  return colour == TiffColour::cmyk ? CGColorSpaceModel::cmyk : CGColorSpaceModel::rgb;
}

std::uint8_t TiffDirectory::decodedBits() const {
  if (colour == TiffColour::other) return 8;
  const bool fits = bits <= 8 && colour != TiffColour::palette && colour != TiffColour::lab;
  return fits ? 8 : 16;
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
  const std::uint16_t photometric = shortField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  directory.colour =
      colourOf(photometric, directory.compression, shortField(file, TIFFTAG_INKSET, INKSET_CMYK));
  directory.labOfProfiles = photometric == PHOTOMETRIC_ICCLAB;
  directory.whiteIsZero = photometric == PHOTOMETRIC_MINISWHITE;
  directory.separatePlanes =
      shortField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  directory.tiled = TIFFIsTiled(file.get()) != 0;
  if (directory.width == 0 || directory.height == 0 || directory.samples == 0) return std::nullopt;
  if (!depthIsKnown(directory)) return std::nullopt;
  if (directory.colour != TiffColour::other && directory.samples < directory.colours()) return std::nullopt;
  readAlpha(file, directory);
  return directory;
}

}  // namespace ostra
