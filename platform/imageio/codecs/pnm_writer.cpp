#include <string>

#include "platform/imageio/codecs/plain_rows.h"
#include "platform/imageio/codecs/pnm.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {
namespace {

// Each line of it with the mark in front.
std::string commentLines(const std::vector<std::string>& comments) {
  std::string lines;
  for (const std::string& comment : comments) {
    lines += "# ";
    for (const char character : comment) {
      const bool ends = character == '\n' || character == '\r';
      lines += ends ? "\n# " : std::string(1, character);
    }
    lines += "\n";
  }
  return lines;
}

std::string headerOf(const Layout& layout, const PlainRows& rows, const std::string& comments) {
  const std::string width = std::to_string(layout.width), height = std::to_string(layout.height);
  const std::string largest = layout.bitsPerComponent == 16 ? "65535" : "255";
  if (!rows.hasAlpha()) {
    return (rows.colours() == 1 ? "P5\n" : "P6\n") + comments + width + " " + height + "\n" + largest + "\n";
  }
  return "P7\n" + comments + "WIDTH " + width + "\nHEIGHT " + height + "\nDEPTH " +
         std::to_string(rows.samples()) + "\nMAXVAL " + largest + "\nTUPLTYPE " +
         (rows.colours() == 1 ? "GRAYSCALE_ALPHA" : "RGB_ALPHA") + "\nENDHDR\n";
}

}  // namespace

Answer<Bytes> encodePnm(const Pixels& pixels, const Properties* properties) {
  const Layout& layout = pixels.layout;
  if (layout.model != CGColorSpaceModel::rgb && layout.model != CGColorSpaceModel::monochrome)
    return Fault{FaultKind::damaged};
  if (needsProfile(pixels.profile, layout.model)) return Fault{FaultKind::damaged};
  std::string comments;
  if (properties != nullptr) {
    const auto blocks = writeMetadata(*properties, {layout.width, layout.height});
    if (!blocks) return Fault{FaultKind::damaged};
    comments = commentLines(blocks->comments);
  }
  PlainRows rows(pixels, layout.bitsPerComponent);
  const std::string header = headerOf(layout, rows, comments);
  const std::size_t sample = layout.bitsPerComponent / 8u, count = std::size_t{layout.width} * rows.samples();
  Bytes file(header.begin(), header.end());
  file.reserve(header.size() + count * sample * layout.height);
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    const std::uint8_t* row = rows.row(y);
    if (sample == 1) {
      file.insert(file.end(), row, row + count);
      continue;
    }
    // The high byte comes first.
    std::size_t at = file.size();
    file.resize(at + 2 * count);
    for (std::size_t i = 0; i < 2 * count; ++i) file[at++] = row[i ^ 1];
  }
  return file;
}

}  // namespace ostra
