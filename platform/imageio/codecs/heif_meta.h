#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/imageio/codecs/bmff_boxes.h"

namespace ostra {

struct HeifExtent {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;  // 0: to the end
};

/// One item: a picture, a part of one, or metadata.
struct HeifItem {
  std::uint32_t type = 0;
  bool hidden = false;
  std::string_view contentType, contentEncoding;
  /// In the file, or where `construction` is 1 in the `idat` box. Others lie in yet other items.
  std::vector<HeifExtent> extents;
  unsigned construction = 0;
  /// Positions in `HeifMeta::properties`, in the order in which they apply.
  std::vector<std::size_t> properties;
};

struct HeifReference {
  std::uint32_t type = 0, from = 0;
  std::vector<std::uint32_t> to;
};

struct HeifGroup {
  std::uint32_t type = 0;
  std::vector<std::uint32_t> members;
};

/// The `meta` box of a file of pictures (HEIF, ISO/IEC 23008-12). Views lie in the bytes that it was read
/// from.
struct HeifMeta {
  std::uint32_t primary = 0;
  std::map<std::uint32_t, HeifItem> items;
  std::vector<BmffBox> properties;
  std::vector<HeifReference> references;
  std::vector<HeifGroup> groups;
  ByteView idat;

  const HeifItem* item(std::uint32_t id) const;
  /// The first property of a type that an item has; nothing when it has none.
  std::optional<ByteView> property(const HeifItem& item, std::uint32_t type) const;
  /// Whether an item refers to another in such a way.
  bool refers(std::uint32_t type, std::uint32_t from, std::uint32_t to) const;
};

/// Nothing when one of its boxes is cut off or contradicts itself.
std::optional<HeifMeta> readHeifMeta(ByteView metaBox);

}  // namespace ostra
