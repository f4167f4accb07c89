#pragma once
#include <cstdint>

namespace ostra {

/// Whether a tag of a picture's directory speaks of its samples and of where they lie, of the colours that
/// they mean, or holds a block that has a place of its own (profile, XMP, IPTC, Photoshop's resources). It is
/// true of that file alone; all other tags describe the picture.
bool speaksOfStorage(std::uint16_t tag);

}  // namespace ostra
