#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/metadata/exif_values.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

bool isOrientation(const Value& value) {
  const auto* number = value.get<std::int64_t>();
  return number && *number >= 1 && *number <= 8;
}

Dictionary readGroup(ByteView block, const ExifStructure& structure, const ExifGroup& group) {
  Dictionary values;
  const Ifd* ifd = structure.find(group.ifd);
  if (!ifd) return values;
  for (const ExifEntry& entry : ifd->entries) {
    const ExifTag* tag = findTag(group, entry.tag);
    if (!tag) continue;
    auto value = readExifValue(block, structure.order, entry, tag->form);
    if (!value || (entry.tag == kOrientationTag && group.ifd == IfdKind::tiff && !isOrientation(*value)))
      continue;
    values.emplace(tag->key, std::move(*value));
  }
  return values;
}

/// The orientation is told once: what the format says of it holds, and the group repeats it.
void raiseOrientation(Dictionary& tree, Dictionary& tiff) {
  const auto inner = tiff.find(kCGImagePropertyOrientation);
  if (inner == tiff.end()) return;
  const auto [outer, isNew] = tree.emplace(kCGImagePropertyOrientation, inner->second);
  if (!isNew) inner->second = outer->second;
}

void raiseDensity(Dictionary& tree) {
  if (tree.contains(kCGImagePropertyDPIWidth) || tree.contains(kCGImagePropertyDPIHeight)) return;
  if (groupOf(tree, kCGImagePropertyTIFFDictionary).empty()) return;
  if (const auto density = statedDensity(
          {{std::string(kCGImagePropertyTIFFDictionary), groupOf(tree, kCGImagePropertyTIFFDictionary)}})) {
    tree.emplace(kCGImagePropertyDPIWidth, density->x);
    tree.emplace(kCGImagePropertyDPIHeight, density->y);
  }
}

}  // namespace

const Dictionary& groupOf(const Dictionary& tree, std::string_view key) {
  static const Dictionary none;
  const auto found = tree.find(key);
  const Dictionary* group = found == tree.end() ? nullptr : found->second.get<Dictionary>();
  return group ? *group : none;
}

void readExif(ByteView block, Dictionary& tree) {
  const auto structure = parseExif(block);
  if (!structure) return;
  for (const ExifGroup& group : exifGroups()) {
    Dictionary values = readGroup(block, *structure, group);
    if (group.ifd == IfdKind::tiff) raiseOrientation(tree, values);
    if (values.empty()) continue;
    // What the format put there itself holds.
    auto& place = tree.emplace(group.key, Dictionary()).first->second;
    if (auto* known = place.get<Dictionary>()) known->merge(values);
  }
  raiseDensity(tree);
}

}  // namespace ostra
