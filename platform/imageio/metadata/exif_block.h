#pragma once
#include <optional>

#include "platform/foundation/value.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// Reads {TIFF}, {Exif} and {GPS} into `tree`, and at the top level the orientation and the density where the
/// tree has none. A malformed block leaves the tree as it is.
void readExif(ByteView block, Dictionary& tree);

/// The block with what differs between `before` (the tree as read) and `after`: a key that is gone takes its
/// entry with it, a group that is gone its directory. The orientation and, when `picture` has a size, the
/// pixel size are set wherever the block tells them; thumbnails are dropped. An empty block is built from
/// what `before` lacks. Nothing when the block is malformed; empty when nothing is left in it.
std::optional<Bytes> patchExif(const Bytes& block, const Dictionary& before, const Dictionary& after,
                               const WrittenPicture& picture);

/// A dictionary of the tree, or an empty one.
const Dictionary& groupOf(const Dictionary& tree, std::string_view key);

}  // namespace ostra
