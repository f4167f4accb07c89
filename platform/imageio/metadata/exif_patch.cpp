#include <array>

#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_editor.h"
#include "platform/imageio/metadata/exif_tags.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

const Value* valueAt(const Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  return found == dictionary.end() ? nullptr : &found->second;
}

bool same(const Value* a, const Value* b) { return a && b ? *a == *b : a == b; }

void setNumber(ExifEditor& editor, IfdKind kind, const ExifTag& tag, const Value& value) {
  const ExifEntry* old = editor.find(kind, tag.tag);
  auto field = makeExifField(tag, value, editor.structure().order, old ? old->type : std::uint16_t{0});
  if (field) {
    editor.set(kind, std::move(*field));
  } else {
    // The old value would be a lie.
    editor.removeTag(kind, tag.tag);
  }
}

void patchTag(ExifEditor& editor, const ExifGroup& group, const ExifTag& tag, const Value* before,
              const Value* after) {
  if (same(before, after)) return;
  if (!after) return editor.removeTag(group.ifd, tag.tag);
  if (tag.structural && !editor.find(group.ifd, tag.tag)) return;
  setNumber(editor, group.ifd, tag, *after);
}

void removeGroup(ExifEditor& editor, const ExifGroup& group) {
  if (group.ifd != IfdKind::tiff) return editor.removeDirectory(group.ifd);
  const Ifd* ifd = editor.structure().find(group.ifd);
  if (!ifd) return;
  const std::vector<ExifEntry> entries = ifd->entries;
  for (const ExifEntry& entry : entries) {
    if (entry.tag != kExifPointer && entry.tag != kGpsPointer) editor.removeTag(group.ifd, entry.tag);
  }
}

/// {TIFF} as it is to be written: the density of the top level, where that was changed, wins over the
/// group's.
Dictionary withTopDensity(const Dictionary& before, const Dictionary& after) {
  Dictionary tiff = groupOf(after, kCGImagePropertyTIFFDictionary);
  const Dictionary& old = groupOf(before, kCGImagePropertyTIFFDictionary);
  const Value* width = valueAt(after, kCGImagePropertyDPIWidth);
  const Value* height = valueAt(after, kCGImagePropertyDPIHeight);
  const bool told = tiff.contains("XResolution") || tiff.contains("YResolution");
  if (!told || (!width && !height)) return tiff;
  const bool changed = !same(width, valueAt(before, kCGImagePropertyDPIWidth)) ||
                       !same(height, valueAt(before, kCGImagePropertyDPIHeight));
  if (changed) {
    const auto density = statedDensity(after);
    if (!density) return tiff;
    tiff.insert_or_assign("XResolution", density->x);
    tiff.insert_or_assign("YResolution", density->y);
    tiff.insert_or_assign("ResolutionUnit", 2);
    return tiff;
  }
  for (const char* key : {"XResolution", "YResolution", "ResolutionUnit"}) {
    const Value* unchanged = valueAt(old, key);
    if (unchanged && tiff.contains(key)) tiff.insert_or_assign(key, *unchanged);
  }
  return tiff;
}

void patchGroup(ExifEditor& editor, const ExifGroup& group, const Dictionary& before,
                const Dictionary& after) {
  if (before.contains(group.key) && !after.contains(group.key)) return removeGroup(editor, group);
  const Dictionary& old = groupOf(before, group.key);
  const bool tiff = group.ifd == IfdKind::tiff;
  const Dictionary now = tiff ? withTopDensity(before, after) : groupOf(after, group.key);
  for (const ExifTag& tag : group.tags) {
    if (tiff && tag.tag == kOrientationTag) continue;
    patchTag(editor, group, tag, valueAt(old, tag.key), valueAt(now, tag.key));
  }
}

/// What the block says now is compared, not the tree as read: that may have had its orientation from
/// elsewhere.
void patchOrientation(ExifEditor& editor, const Dictionary& before, const Dictionary& after) {
  const ExifGroup& tiff = exifGroups().front();
  const ExifTag& tag = *findTag(tiff, kOrientationTag);
  const auto wanted = [&](const Dictionary& tree) {
    const Value* top = valueAt(tree, kCGImagePropertyOrientation);
    return top ? top : valueAt(groupOf(tree, kCGImagePropertyTIFFDictionary), kCGImagePropertyOrientation);
  };
  const Value* value = wanted(after);
  if (!value) {
    if (wanted(before)) editor.removeTag(IfdKind::tiff, kOrientationTag);
    return;
  }
  const ExifEntry* entry = editor.find(IfdKind::tiff, kOrientationTag);
  const auto stored =
      entry ? readExifValue(editor.bytes(), editor.structure().order, *entry, tag.form) : std::nullopt;
  if (!stored || !(*stored == *value)) setNumber(editor, IfdKind::tiff, tag, *value);
}

struct SizeTag {
  IfdKind kind;
  std::uint16_t tag;
  bool vertical;
};
constexpr std::array<SizeTag, 4> kSizeTags = {{{IfdKind::tiff, 0x0100, false},
                                               {IfdKind::tiff, 0x0101, true},
                                               {IfdKind::exif, 0xA002, false},
                                               {IfdKind::exif, 0xA003, true}}};

void patchSize(ExifEditor& editor, const WrittenPicture& picture) {
  if (picture.width == 0 || picture.height == 0) return;
  for (const SizeTag& size : kSizeTags) {
    const ExifEntry* entry = editor.find(size.kind, size.tag);
    if (!entry) continue;
    const Value value(std::int64_t{size.vertical ? picture.height : picture.width});
    const auto stored = readExifValue(editor.bytes(), editor.structure().order, *entry, ExifForm::integer);
    if (stored && *stored == value) continue;
    setNumber(editor, size.kind, {size.tag, "", kLong, ExifForm::integer}, value);
  }
}

/// The interoperability index names a colour space, as the key does that the tree lost. Adobe RGB (R03) is
/// read from it even without that key.
void patchInteropIndex(ExifEditor& editor, const Dictionary& before, const Dictionary& after) {
  constexpr std::uint16_t kIndex = 1;
  const auto tells = [](const Dictionary& tree) {
    return groupOf(tree, kCGImagePropertyExifDictionary).contains(kCGImagePropertyExifColorSpace);
  };
  const ExifEntry* entry = editor.find(IfdKind::interop, kIndex);
  if (entry == nullptr || !entry->value || tells(after)) return;
  const auto name = readExifValue(editor.bytes(), editor.structure().order, *entry, ExifForm::text);
  if (tells(before) || (name && *name == Value("R03"))) editor.removeTag(IfdKind::interop, kIndex);
}

/// A tree whose pixel size in {Exif}, where it has one, is that of the picture.
Dictionary withSize(Dictionary tree, const WrittenPicture& picture) {
  const auto found = tree.find(kCGImagePropertyExifDictionary);
  Dictionary* exif = found == tree.end() ? nullptr : found->second.get<Dictionary>();
  if (!exif || picture.width == 0 || picture.height == 0) return tree;
  const auto correct = [&](const char* key, std::uint32_t size) {
    if (exif->contains(key)) exif->insert_or_assign(key, std::int64_t{size});
  };
  correct("PixelXDimension", picture.width);
  correct("PixelYDimension", picture.height);
  return tree;
}

/// What a block is patched by.
struct Patch {
  const Dictionary& before;
  const Dictionary& after;
  const WrittenPicture& picture;
};

std::optional<Bytes> applied(ExifEditor editor, const Patch& patch) {
  editor.dropThumbnails();
  for (const ExifGroup& group : exifGroups()) patchGroup(editor, group, patch.before, patch.after);
  patchInteropIndex(editor, patch.before, patch.after);
  patchOrientation(editor, patch.before, patch.after);
  patchSize(editor, patch.picture);
  return std::move(editor).finish();
}

}  // namespace

std::optional<Bytes> patchExif(const Bytes& block, const Dictionary& before, const Dictionary& after,
                               const WrittenPicture& picture) {
  if (block.empty()) return applied(ExifEditor::fresh(), {before, withSize(after, picture), picture});
  auto editor = ExifEditor::open(block);
  if (!editor) return std::nullopt;
  const Patch patch{before, after, picture};
  auto result = applied(*editor, patch);
  if (result && result->size() <= block.size()) return result;
  // First what goes anyway: its directories may lie across others that are about to change.
  editor->dropThumbnails();
  editor->dropDangling();
  editor->closeDirectories();
  return applied(std::move(*editor), patch);
}

}  // namespace ostra
