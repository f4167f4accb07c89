#pragma once
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Four letters as a number, such as "jp2h".
constexpr std::uint32_t boxType(const char (&letters)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<std::uint8_t>(letters[i]);
  return type;
}

struct Box {
  std::uint32_t type = 0;
  ByteView content;
};

/// The boxes of a file, or of a box that holds others (ISO/IEC 15444-1, annex I), in their order. One without
/// a length reaches to the end.
class BoxWalk {
 public:
  explicit BoxWalk(ByteView bytes) : rest_(bytes) {}
  /// Nothing at the end, and before a box that is cut off or none.
  std::optional<Box> next();
  /// Once there is no next box: whether nothing follows the last one, or as many zeros as are no box that is
  /// cut off.
  bool endedWell() const;

 private:
  ByteView rest_;
};

}  // namespace ostra
