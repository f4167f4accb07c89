#include "platform/imageio/codecs/lzw_strings.h"

namespace ostra {

void LzwStrings::learn(std::uint8_t last) {
  if (next_ >= kCodes) return;
  const String before = stringOf(previous_);
  const auto length = static_cast<std::uint16_t>(before.length + 1);
  table_[next_++] = {static_cast<std::uint16_t>(previous_), length, before.first, last};
}

std::span<const std::uint8_t> LzwStrings::take(unsigned code) {
  const bool isLiteral = code < clear_, isEnd = code == clear_ + 1;
  if (!hasPrevious_) {
    if (!isLiteral) return {};
  } else if (isEnd || code > next_ || code >= kCodes || (code == next_ && next_ == kCodes)) {
    return {};
  } else {
    // The one code that is used before it is known repeats its own beginning.
    learn(code == next_ ? stringOf(previous_).first : stringOf(code).first);
  }
  hasPrevious_ = true;
  previous_ = code;
  const std::size_t length = stringOf(code).length;
  for (std::size_t i = length; i > 0; --i) {
    const String string = stringOf(code);
    text_[i - 1] = string.last;
    code = string.before;
  }
  return std::span(text_).first(length);
}

}  // namespace ostra
