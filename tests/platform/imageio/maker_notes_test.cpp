#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {
namespace {

struct Note {
  std::size_t offset = 0;
  Bytes bytes;
  friend bool operator==(const Note&, const Note&) = default;
};

std::optional<Note> noteIn(const Bytes& block) {
  constexpr std::uint16_t kMakerNote = 0x927C;
  const auto structure = parseExif(block);
  const Ifd* ifd = structure ? structure->find(IfdKind::exif) : nullptr;
  const ExifEntry* entry = ifd != nullptr ? ifd->find(kMakerNote) : nullptr;
  if (entry == nullptr || !entry->outOfLine()) return std::nullopt;
  const auto begin = block.begin() + static_cast<std::ptrdiff_t>(entry->value->offset);
  return Note{entry->value->offset, Bytes(begin, begin + static_cast<std::ptrdiff_t>(entry->value->size))};
}

// As the engine strips and turns them.
Bytes writtenExif(Properties properties) {
  const auto exif = properties.tree.find(kCGImagePropertyExifDictionary);
  if (exif != properties.tree.end())
    exif->second.get<Dictionary>()->erase(std::string(kCGImagePropertyExifColorSpace));
  const auto blocks = writeMetadata(properties, {.width = 4000, .height = 3000});
  return blocks ? blocks->exif : Bytes();
}

// Of real cameras: whatever else changes, a maker note keeps its bytes and its place.
TEST(MakerNotes, OfTheCorpusKeepEveryByteAndTheirPlace) {
  const char* folder = std::getenv("OSTRA_CORPUS");
  if (folder == nullptr) GTEST_SKIP() << "OSTRA_CORPUS names no folder of pictures";
  std::size_t notes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const auto opened = openBytes(readFile(entry.path()));
    const auto* reader = std::get_if<std::unique_ptr<Reader>>(&opened);
    const auto answer = reader != nullptr ? (*reader)->properties(0) : Answer<Properties>(Fault{});
    const auto* properties = std::get_if<Properties>(&answer);
    if (properties == nullptr || !properties->carrier) continue;
    const auto before = noteIn(properties->carrier->exif);
    if (!before) continue;
    ++notes;
    EXPECT_TRUE(noteIn(writtenExif(*properties)) == before) << entry.path();
  }
  RecordProperty("notes", static_cast<int>(notes));
  EXPECT_GT(notes, 0u);
}

}  // namespace
}  // namespace ostra::test
