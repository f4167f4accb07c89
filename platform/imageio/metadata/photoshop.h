#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// A Photoshop block, as in a JPEG's APP13 segments joined and without their "Photoshop 3.0" and NUL.
struct PhotoshopBlock {
  Bytes iptc;
  /// Every other resource, whole with its head and padding, in file order.
  Bytes resources;
};

/// Takes the IPTC records (resource 1028, or several of them) out of the block. Never fails: bytes that are
/// no resource stay at the end of `resources`.
PhotoshopBlock splitPhotoshop(ByteView block);
/// The contents of the first resource of this number; empty when there is none.
ByteView findPhotoshopResource(ByteView block, std::uint16_t number);
/// The resources that still tell the truth in a file of another format: of a whole document they are few.
Bytes resourcesOutsideDocuments(ByteView resources);
/// The block that holds both again; empty when both are.
Bytes joinPhotoshop(ByteView iptc, ByteView resources);

/// The resources that still tell the truth beside new pixels: no thumbnails (1033, 1036), no colour profile
/// (1039), resolution (1005) as `density` states it, and the digest of the IPTC records (1061) only where
/// they are unchanged.
Bytes patchPhotoshop(ByteView resources, const std::optional<Density>& density, bool iptcUnchanged);
/// With the digest of the IPTC records (1061: their MD5).
Bytes withIptcDigest(ByteView resources, ByteView iptc);
/// The resolution (1005), in dots an inch.
std::optional<Density> photoshopDensity(ByteView resources);

}  // namespace ostra
