#pragma once
#include <cstdint>
#include <optional>

#include "platform/imageio/codec_door.h"
#include "platform/imageio/codecs/heif_meta.h"
#include "platform/imageio/codecs/heif_transforms.h"

namespace ostra {

/// Colour by the numbers of ITU-T H.273. 2 stands for unspecified.
struct HeifColour {
  unsigned primaries = 2, transfer = 2;
};

/// What the boxes of a file of pictures tell of its primary one, nothing decoded. Views lie in the file.
struct HeifFile {
  std::uint32_t itemType = 0;  // how the primary picture is coded
  /// As stored, before any cropping.
  std::uint32_t width = 0, height = 0;
  HeifTransforms transforms;
  unsigned bits = 8;
  bool isGray = false, hasAlpha = false;
  /// Pictures of their own: not parts, thumbnails, masks, depth, gain maps or other forms of the primary
  /// one; or the samples of a track where these are more.
  std::uint32_t count = 1;
  ByteView icc;
  std::optional<HeifColour> colour;
  HeifMeta meta;
};

/// Nothing when the file is cut off or contradicts itself, or has no primary picture with a size.
std::optional<HeifFile> readHeifFile(ByteView file);

/// The bytes of an item of the file, put together; empty when they do not lie there or are none. Throws
/// `LimitExceeded` beyond `limits.metadataBytes`.
Bytes heifItemContent(ByteView file, const HeifMeta& meta, const HeifItem& item, const Limits& limits);

/// What the file states of its colours: the profile where it fits, else the numbers.
ProfileRecord heifProfile(const HeifFile& heif, const Limits& limits);

}  // namespace ostra
