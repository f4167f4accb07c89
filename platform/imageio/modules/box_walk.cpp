#include "platform/imageio/modules/box_walk.h"

#include <algorithm>

#include "platform/imageio/codecs/big_endian.h"

namespace ostra {

std::optional<Box> BoxWalk::next() {
  constexpr std::uint64_t kToTheEnd = 0, kLengthFollows = 1;
  std::size_t head = 8;
  if (rest_.size() < head || endedWell()) return std::nullopt;
  std::uint64_t length = bigEndian32(rest_, 0);
  if (length == kLengthFollows) {
    head = 16;
    if (rest_.size() < head) return std::nullopt;
    length = std::uint64_t{bigEndian32(rest_, 8)} << 32 | bigEndian32(rest_, 12);
  } else if (length == kToTheEnd) {
    length = rest_.size();
  }
  if (length < head || length > rest_.size()) return std::nullopt;
  const Box box{bigEndian32(rest_, 4), rest_.subspan(head, length - head)};
  rest_ = rest_.subspan(length);
  return box;
}

bool BoxWalk::endedWell() const {
  constexpr std::size_t kShortestBox = 8;
  if (!rest_.empty() && rest_.size() < kShortestBox) return false;
  return std::all_of(rest_.begin(), rest_.end(), [](std::uint8_t byte) { return byte == 0; });
}

}  // namespace ostra
