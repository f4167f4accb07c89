#include "platform/imageio/codecs/exif_colour.h"

#include <string>

#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::uint16_t kColorSpaceTag = 0xA001, kInteropIndexTag = 1;

unsigned colorSpaceNumber(ByteView block, const ExifStructure& structure) {
  const Ifd* ifd = structure.find(IfdKind::exif);
  const ExifEntry* entry = ifd != nullptr ? ifd->find(kColorSpaceTag) : nullptr;
  if (entry == nullptr || !entry->value || entry->type != kShort || entry->count != 1) return 0;
  return read16(block, entry->value->offset, structure.order);
}

std::string_view interopIndex(ByteView block, const ExifStructure& structure) {
  const Ifd* ifd = structure.find(IfdKind::interop);
  const ExifEntry* entry = ifd != nullptr ? ifd->find(kInteropIndexTag) : nullptr;
  if (entry == nullptr || !entry->value) return {};
  return asText(block.subspan(entry->value->offset, entry->value->size));
}

}  // namespace

ProfileRecord exifColour(ByteView block) {
  const auto structure = parseExif(block);
  if (!structure) return Untagged{};
  const unsigned number = colorSpaceNumber(block, *structure);
  // 2 is no number of the standard, but cameras wrote it for Adobe RGB.
  if (number == 2 || (number != 1 && interopIndex(block, *structure).starts_with("R03")))
    return NamedSpace{std::string(kCGColorSpaceAdobeRGB1998)};
  if (number == 1) return NamedSpace{std::string(kCGColorSpaceSRGB)};
  return Untagged{};
}

}  // namespace ostra
