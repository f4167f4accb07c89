#include <algorithm>
#include <limits>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/modules/jpeg2000/jp2_written_boxes.h"
#include "platform/imageio/modules/jpeg2000/jpeg2000.h"
#include "platform/imageio/modules/jpeg2000/opj_encode.h"
#include "platform/imageio/straight_rows.h"

namespace ostra {
namespace {

// Marker segments of text, for the codestream's header.
Bytes commentSegments(const std::vector<std::string>& comments) {
  constexpr std::size_t kHead = 4, kMost = 65535 - kHead;
  Bytes segments;
  for (const std::string& comment : comments) {
    if (comment.empty() || comment.size() > kMost) continue;
    const std::size_t length = kHead + comment.size();
    for (const std::size_t byte :
         {std::size_t{0xFF}, std::size_t{0x64}, length >> 8, length & 0xFF, std::size_t{0}, std::size_t{1}})
      segments.push_back(static_cast<std::uint8_t>(byte));
    segments.insert(segments.end(), comment.begin(), comment.end());
  }
  return segments;
}

// Behind the two markers that come first, of which the second has a length.
void addComments(Bytes& file, std::size_t codestream, const std::vector<std::string>& comments) {
  const Bytes segments = commentSegments(comments);
  const std::size_t place = codestream + 4 + bigEndian16(file, codestream + 4);
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(place), segments.begin(), segments.end());
}

// A length of 0 says that the box reaches to the end of the file, however far that is.
void setLength(Bytes& file, std::size_t box) {
  const std::size_t length = file.size() - box;
  Bytes field;
  appendBigEndian32(
      field, length > std::numeric_limits<std::uint32_t>::max() ? 0 : static_cast<std::uint32_t>(length));
  std::copy(field.begin(), field.end(), file.begin() + static_cast<std::ptrdiff_t>(box));
}

bool canBeWritten(const Layout& layout) {
  return layout.width > 0 && layout.height > 0 &&
         (layout.model == CGColorSpaceModel::monochrome || layout.model == CGColorSpaceModel::rgb);
}

}  // namespace

Answer<Bytes> encodeJpeg2000(const Pixels& pixels, const Properties* properties) {
  constexpr std::size_t kBoxHead = 8;
  if (!canBeWritten(pixels.layout)) return Fault{FaultKind::damaged};
  StraightRows rows(pixels);
  auto boxes = jp2BoxesToWrite(pixels, rows.alpha() == CGImageAlphaInfo::last, properties);
  if (!boxes) return Fault{FaultKind::damaged};
  OpjOutput output;
  output.bytes = std::move(boxes->before);
  output.start = output.bytes.size();
  if (!encodeCodestream(pixels.layout, rows, output)) return Fault{FaultKind::damaged};
  if (!boxes->comments.empty()) addComments(output.bytes, output.start, boxes->comments);
  setLength(output.bytes, output.start - kBoxHead);
  return std::move(output.bytes);
}

}  // namespace ostra
