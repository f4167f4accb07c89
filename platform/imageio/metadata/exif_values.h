#pragma once
#include <cstdint>
#include <optional>

#include "platform/foundation/value.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/exif_tags.h"

namespace ostra {

/// The value of an entry in the form of its tag. Nothing when the entry is of a type that the form cannot be
/// read from, a denominator is 0, the encoding of a comment is not known, or the value is larger than 64 KiB.
std::optional<Value> readExifValue(ByteView block, ByteOrder order, const ExifEntry& entry, ExifForm form);

/// An entry's value, ready to be laid into a block of the same byte order.
struct ExifField {
  std::uint16_t tag = 0;
  std::uint16_t type = 0;
  std::uint32_t count = 0;
  Bytes bytes;
};
/// The field that reads back as `value`. It keeps the type of the entry that it replaces (0: none) where that
/// type can hold it. Nothing when the tag cannot hold the value.
std::optional<ExifField> makeExifField(const ExifTag& tag, const Value& value, ByteOrder order,
                                       std::uint16_t oldType = 0);

}  // namespace ostra
