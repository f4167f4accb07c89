#include "platform/imageio/codecs/heif_derived.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/imageio/codecs/heif_file.h"

namespace ostra {
namespace {

using Size = std::pair<std::uint32_t, std::uint32_t>;

Size readSize(BmffFields& fields, bool isLong) {
  const std::uint32_t width = isLong ? fields.number32() : fields.number16();
  const std::uint32_t height = isLong ? fields.number32() : fields.number16();
  return {width, height};
}

/// Version and flags; then the numbers of rows and columns, or the four values of the canvas.
std::optional<Size> sizeInContent(ByteView content, bool isGrid) {
  BmffFields fields(content);
  const bool isLong = (fields.number16() & 1) != 0;
  fields.number(isGrid ? 2 : 8);
  const Size size = readSize(fields, isLong);
  return fields.isIntact() ? std::optional(size) : std::nullopt;
}

std::optional<Size> sizeInProperties(const HeifMeta& meta, const HeifItem& item) {
  BmffFields fields(meta.property(item, bmffType("ispe")).value_or(ByteView()));
  fields.number32();  // version and flags
  const Size size = readSize(fields, true);
  return fields.isIntact() ? std::optional(size) : std::nullopt;
}

/// Of more bytes than the positions of thousands of parts need: none.
Bytes contentOf(ByteView file, const HeifMeta& meta, const HeifItem& item) {
  Limits limits;
  limits.metadataBytes = 1 << 16;
  try {
    return heifItemContent(file, meta, item, limits);
  } catch (const LimitExceeded&) {
    return {};
  }
}

}  // namespace

bool derivedSizesAgree(ByteView file, const HeifMeta& meta) {
  return std::all_of(meta.items.begin(), meta.items.end(), [&](const auto& entry) {
    const HeifItem& item = entry.second;
    const bool isGrid = item.type == bmffType("grid");
    if (!isGrid && item.type != bmffType("iovl")) return true;
    const auto size = sizeInContent(contentOf(file, meta, item), isGrid);
    return size && size == sizeInProperties(meta, item);
  });
}

}  // namespace ostra
