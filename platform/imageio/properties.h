#pragma once
#include <memory>
#include <string_view>

#include "platform/foundation/value.h"

namespace ostra {

/// The metadata blocks of a picture as they lay in its file; see metadata/carrier.h. Opaque to the actions.
class Carrier;

/// What is known of a picture besides its pixels: a tree of values under the keys of property_keys.h, which
/// is read and edited, and beside it the raw blocks, which keep everything that the tree does not name.
///
/// A writer patches the blocks by the difference between the tree as it was read and the tree that it is
/// handed.
struct Properties {
  Dictionary tree;
  std::shared_ptr<const Carrier> carrier;

  /// Removes a key of the top level; a group takes its part of the carrier with it. True when it was there.
  bool remove(std::string_view key);
  /// Neither values nor blocks: nothing that an encoder would need to be told.
  bool empty() const;
};

}  // namespace ostra
