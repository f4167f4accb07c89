// An Exif block of any content under any edits: a byte that counts them, four bytes an edit, the block.
#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/metadata/exif_shed.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/exif_tags.h"

namespace ostra {

namespace {

constexpr std::uint16_t kMakerNote = 0x927C;

/// Values of every kind; few of them fit a given key, which then goes.
Value valueFor(const ExifTag& tag, std::uint8_t seed) {
  const std::string words(seed, static_cast<char>('a' + seed % 26));
  switch (tag.form) {
    case ExifForm::integer:
      return std::int64_t{seed} * 257;
    case ExifForm::integers:
    case ExifForm::version:
      return Array{Value(seed % 10), Value(seed % 7), Value(1)};
    case ExifForm::real:
    case ExifForm::degrees:
      return seed / 7.0;
    case ExifForm::reals:
      return Array{Value(seed / 3.0), Value(1.5)};
    case ExifForm::data:
      return Bytes(seed, seed);
    case ExifForm::time:
      return "12:34:56.5";
    default:
      return words;
  }
}

void edit(Dictionary& tree, ByteView instruction) {
  const ExifGroup& group = exifGroups()[instruction[0] % exifGroups().size()];
  const ExifTag& tag = group.tags[instruction[1] % group.tags.size()];
  if (instruction[2] % 8 == 0) {
    tree.erase(std::string(group.key));
    return;
  }
  auto* values = tree.emplace(group.key, Dictionary()).first->second.get<Dictionary>();
  if (values == nullptr) return;
  if (instruction[2] % 2 == 0) {
    values->erase(std::string(tag.key));
  } else {
    values->insert_or_assign(std::string(tag.key), valueFor(tag, instruction[3]));
  }
}

/// The maker note, where it shares its bytes with nothing else.
std::optional<ByteRange> makerNote(ByteView block) {
  const auto structure = parseExif(block);
  const Ifd* ifd = structure ? structure->find(IfdKind::exif) : nullptr;
  const ExifEntry* entry = ifd != nullptr ? ifd->find(kMakerNote) : nullptr;
  if (entry == nullptr || !entry->outOfLine()) return std::nullopt;
  const auto live = structure->liveRanges();
  const auto sharing = std::count_if(live.begin(), live.end(),
                                     [&](const ByteRange& range) { return overlap(range, *entry->value); });
  return sharing == 1 ? entry->value : std::nullopt;
}

void demand(bool condition) {
  if (!condition) std::abort();
}

void demandSameNote(ByteView before, ByteView after) {
  const auto note = makerNote(before);
  if (!note) return;
  demand(after.size() >= note->end());
  demand(
      std::equal(before.begin() + note->offset, before.begin() + note->end(), after.begin() + note->offset));
}

void demandRemovedKeysGone(const Dictionary& before, const Dictionary& after, const Dictionary& again) {
  for (const ExifGroup& group : exifGroups()) {
    const Dictionary& now = groupOf(after, group.key);
    for (const auto& [key, value] : groupOf(before, group.key)) {
      if (!now.contains(key) && key != "Orientation") demand(!groupOf(again, group.key).contains(key));
    }
  }
}

void patch(ByteView input) {
  if (input.empty()) return;
  const std::size_t edits = std::min<std::size_t>(input[0] % 16, (input.size() - 1) / 4);
  const ByteView instructions = input.subspan(1, edits * 4), rest = input.subspan(1 + edits * 4);
  const Bytes block(rest.begin(), rest.end());
  Dictionary before;
  readExif(block, before);
  Dictionary after = before;
  for (std::size_t i = 0; i < edits; ++i) edit(after, instructions.subspan(4 * i, 4));
  const auto patched = patchExif(block, before, after, {.width = 70'000, .height = 3});
  demand(patched.has_value() || !parseExif(block) || block.empty());
  if (!patched || patched->empty()) return;
  demand(parseExif(*patched).has_value());
  Dictionary again;
  readExif(*patched, again);
  demandRemovedKeysGone(before, after, again);
  if (groupOf(after, "{Exif}").size() > 0 || !before.contains("{Exif}")) demandSameNote(block, *patched);
  const std::size_t half = patched->size() / 2;
  if (const auto shed = shedExif(*patched, half)) demand(shed->size() <= half);
}

}  // namespace

}  // namespace ostra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::patch({data, size});
  return 0;
}
