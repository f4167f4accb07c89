#pragma once

namespace ostra {

/// Gives libheif a HEVC decoder that refuses what its own one overlooks: missing and surplus data of a
/// slice, and pixels that are not those of the checksum that a picture may carry. It starts no thread. False
/// when libheif does not take it.
bool registerHevcDecoder();

}  // namespace ostra
