#include "platform/imageio/codecs/bmff_boxes.h"

#include <algorithm>

namespace ostra {

std::uint64_t BmffFields::number(std::size_t bytes) {
  if (bytes > rest_.size()) {
    intact_ = false;
    rest_ = {};
    return 0;
  }
  std::uint64_t value = 0;
  for (const std::uint8_t byte : rest_.first(bytes)) value = value << 8 | byte;
  rest_ = rest_.subspan(bytes);
  return value;
}

std::string_view BmffFields::text() {
  const auto end = std::find(rest_.begin(), rest_.end(), 0);
  const auto size = static_cast<std::size_t>(end - rest_.begin());
  const std::string_view text(reinterpret_cast<const char*>(rest_.data()), size);
  rest_ = rest_.subspan(std::min(size + 1, rest_.size()));
  return text;
}

// A size of 1 means that 64 bits follow the type, and 0 that the box goes to the end.
std::optional<BmffBox> BmffWalk::next() {
  if (endedWell()) return std::nullopt;
  BmffFields fields(rest_);
  std::uint64_t size = fields.number32();
  const std::uint32_t type = fields.number32();
  if (size == 1) size = fields.number(8);
  if (size == 0) size = rest_.size();
  const std::size_t head = rest_.size() - fields.rest().size();
  if (!fields.isIntact() || size < head || size > rest_.size()) {
    if (fields.isIntact() && size > rest_.size()) cutOff_ = type;
    return std::nullopt;
  }
  const BmffBox box{type, rest_.subspan(head, size - head)};
  rest_ = rest_.subspan(size);
  return box;
}

bool BmffWalk::endedWell() const {
  constexpr std::size_t kShortestBox = 8;
  if (!rest_.empty() && rest_.size() < kShortestBox) return false;
  return std::all_of(rest_.begin(), rest_.end(), [](std::uint8_t byte) { return byte == 0; });
}

std::optional<ByteView> findBmffBox(ByteView bytes, std::uint32_t type) {
  BmffWalk walk(bytes);
  while (const auto box = walk.next()) {
    if (box->type == type) return box->content;
  }
  return std::nullopt;
}

}  // namespace ostra
