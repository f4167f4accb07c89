#pragma once
#include <array>
#include <cstdint>
#include <span>

namespace ostra {

/// The table of strings that the codes of GIF's variant of LZW build up, and what each code stands for.
class LzwStrings {
 public:
  /// `codeSize` 1 to 8: the bits of an entry, less one than those of the first codes.
  explicit LzwStrings(unsigned codeSize) : clear_(1u << codeSize) { reset(); }

  /// What a code stands for, valid until the next call; nothing when it is impossible at this place. The
  /// clear code stands for no entries and is told by `isClear`. The end code is never given.
  std::span<const std::uint8_t> take(unsigned code);
  bool isClear(unsigned code) const { return code == clear_; }
  void reset() {
    next_ = clear_ + 2;
    hasPrevious_ = false;
  }

 private:
  static constexpr unsigned kCodes = 4096;
  struct String {
    std::uint16_t before = 0;  // the code of all but the last
    std::uint16_t length = 0;
    std::uint8_t first = 0, last = 0;
  };
  String stringOf(unsigned code) const {
    if (code >= clear_) return table_[code];
    const auto entry = static_cast<std::uint8_t>(code);
    return {0, 1, entry, entry};
  }
  void learn(std::uint8_t last);

  unsigned clear_, next_ = 0, previous_ = 0;
  bool hasPrevious_ = false;
  std::array<String, kCodes> table_{};
  std::array<std::uint8_t, kCodes> text_{};
};

}  // namespace ostra
