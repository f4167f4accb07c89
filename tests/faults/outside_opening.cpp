#include "tests/faults/outside_opening.h"

#include "tests/faults/picture_parts.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"
#include "tests/system/corpus_peers.h"
#include "tests/system/format_peers.h"

namespace ostra::test {

namespace {

bool peerDecodes(const std::string& path, const std::string& extension) {
  for (const FormatPeer& peer : formatPeers()) {
    if (std::string(peer.extensions).find(" " + extension + " ") == std::string::npos) continue;
    const TemporaryFolder folder;
    return runProgram(peer.decode(path, folder.path(std::string("decoded.") + peer.result))).status == 0;
  }
  return imageMagickDecodes(path);
}

}  // namespace

std::string troubleOfOthers(const std::string& path, ByteView before) {
  const auto format = formatOf(readFile(path));
  if (!format) {
    const TemporaryFolder other;
    const std::string extension = extensionOf(readFile(path)), copy = other.path("now." + extension);
    writeFile(copy, readFile(path));
    return peerDecodes(copy, extension) ? "" : "the format's own tool";
  }
  const bool png = format == PictureFormat::png;
  // A name's ending would tell the readers what to expect.
  const TemporaryFolder folder;
  const std::string now = folder.path(png ? "now.png" : "now.jpg");
  writeFile(now, readFile(path));
  if (!imageMagickDecodes(now)) return "ImageMagick";
  if (!formatOf(before)) return checkerComplains(now, png) ? "the checker" : "";
  const bool wasPng = formatOf(before) == PictureFormat::png;
  const std::string then = folder.path(wasPng ? "then.png" : "then.jpg");
  writeFile(then, before);
  if (!libraryDecodes(now, png) && libraryDecodes(then, wasPng)) return "the format's library";
  if (checkerComplains(now, png) && !checkerComplains(then, wasPng)) return "the checker";
  return {};
}

}  // namespace ostra::test
