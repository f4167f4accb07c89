#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/imageio/image_source.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {
namespace {

// Real files, good and bad: each is read, and what was read is written again and read back.
TEST(Corpus, IsReadWithoutACrashAndRewrittenWithoutALoss) {
  const char* folder = std::getenv("OSTRA_CORPUS");
  if (folder == nullptr) GTEST_SKIP() << "OSTRA_CORPUS names no folder of pictures";
  std::size_t pictures = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const Bytes file = readFile(entry.path());
    const auto opened = openBytes(file);
    const auto* reader = std::get_if<std::unique_ptr<Reader>>(&opened);
    if (reader == nullptr) continue;
    const auto properties = (*reader)->properties(0);
    const auto pixels = (*reader)->decode(0);
    if (!std::holds_alternative<Pixels>(pixels) || !std::holds_alternative<Properties>(properties)) continue;
    ++pictures;
    const auto& original = std::get<Pixels>(pixels);
    if (original.layout.model == CGColorSpaceModel::cmyk) continue;
    Pixels written = original;
    written.profile = Untagged{};
    const auto again = CodecDoor::standard().encode("public.png", written, &std::get<Properties>(properties));
    // Metadata that cannot be written is refused; the engine then goes without.
    const Bytes bytes =
        std::holds_alternative<Bytes>(again) ? std::get<Bytes>(again) : encoded("public.png", written);
    EXPECT_EQ(asRgba16(decoded(bytes)), asRgba16(original)) << entry.path();
  }
  EXPECT_GT(pictures, 0u);
}

}  // namespace
}  // namespace ostra::test
