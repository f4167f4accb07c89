#include "tests/faults/outside_opening.h"

#include "tests/faults/picture_parts.h"
#include "tests/support/temporary_folder.h"
#include "tests/system/corpus_peers.h"

namespace ostra::test {

std::string troubleOfOthers(const std::string& path, ByteView before) {
  const bool png = formatOf(readFile(path)) == PictureFormat::png;
  // A name's ending would tell the readers what to expect.
  const TemporaryFolder folder;
  const std::string now = folder.path(png ? "now.png" : "now.jpg");
  writeFile(now, readFile(path));
  if (!imageMagickDecodes(now)) return "ImageMagick";
  const bool wasPng = formatOf(before) == PictureFormat::png;
  const std::string then = folder.path(wasPng ? "then.png" : "then.jpg");
  writeFile(then, before);
  if (!libraryDecodes(now, png) && libraryDecodes(then, wasPng)) return "the format's library";
  if (checkerComplains(now, png) && !checkerComplains(then, wasPng)) return "the checker";
  return {};
}

}  // namespace ostra::test
