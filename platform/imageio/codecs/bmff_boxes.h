#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra {

/// A box type of the ISO base media file format (ISO/IEC 14496-12) as a number: four characters.
constexpr std::uint32_t bmffType(const char (&name)[5]) {
  std::uint32_t type = 0;
  for (int i = 0; i < 4; ++i) type = type << 8 | static_cast<std::uint8_t>(name[i]);
  return type;
}

struct BmffBox {
  std::uint32_t type = 0;
  ByteView content;
};

/// The fields of a box, one after another. Beyond the end all are zero, and it is not intact any more.
class BmffFields {
 public:
  explicit BmffFields(ByteView content) : rest_(content) {}

  /// A big-endian number of 0 to 8 bytes.
  std::uint64_t number(std::size_t bytes);
  std::uint8_t byte() { return static_cast<std::uint8_t>(number(1)); }
  std::uint16_t number16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t number32() { return static_cast<std::uint32_t>(number(4)); }
  /// Up to a zero byte, or all that is left.
  std::string_view text();
  ByteView rest() const { return rest_; }
  bool isIntact() const { return intact_; }

 private:
  ByteView rest_;
  bool intact_ = true;
};

/// Boxes that lie one after another: in a file, or in a box of boxes. JPEG 2000 has the same (ISO/IEC
/// 15444-1, annex I).
class BmffWalk {
 public:
  explicit BmffWalk(ByteView bytes) : rest_(bytes) {}

  /// Nothing at the end, and where what follows is no whole box.
  std::optional<BmffBox> next();
  /// Once there is no next box: whether nothing follows the last one, or as many zeros as are no box that is
  /// cut off.
  bool endedWell() const;
  /// The type of a box that claims more bytes than there are; 0 when none did.
  std::uint32_t cutOff() const { return cutOff_; }

 private:
  ByteView rest_;
  std::uint32_t cutOff_ = 0;
};

/// The content of the first box of a type; nothing when there is none.
std::optional<ByteView> findBmffBox(ByteView bytes, std::uint32_t type);

}  // namespace ostra
