#include "platform/imageio/decoder/believed_pixels.h"

#include <algorithm>

#include "platform/imageio/decoder/shared_pixels.h"

namespace ostra {
namespace {

bool isOneOf(std::uint32_t value, std::initializer_list<std::uint32_t> known) {
  return std::find(known.begin(), known.end(), value) != known.end();
}

bool modelIsKnown(CGColorSpaceModel model) {
  return model == CGColorSpaceModel::monochrome || model == CGColorSpaceModel::rgb ||
         model == CGColorSpaceModel::cmyk;
}

/// Whether the size is the claimed one and the rows hold the pixels.
bool fitsTogether(const Layout& layout, const Opened& opened) {
  if (layout.width == 0 || layout.height == 0) return false;
  if (opened.width != 0 && (layout.width != opened.width || layout.height != opened.height)) return false;
  if (!modelIsKnown(layout.model) || !isOneOf(layout.bitsPerComponent, {8, 16})) return false;
  const std::uint32_t components = layout.bitsPerPixel / layout.bitsPerComponent;
  if (layout.bitsPerPixel % layout.bitsPerComponent != 0 || !isOneOf(components, {1, 2, 3, 4, 5}))
    return false;
  return layout.bytesPerRow >= std::uint64_t{layout.width} * (layout.bitsPerPixel / 8);
}

bool liesWithin(const DecodedPixels& said, std::uint64_t fileSize) {
  const auto needed = checkedProduct(said.layout.bytesPerRow, said.layout.height);
  return needed && *needed <= said.size && said.size <= fileSize && said.offset <= fileSize - said.size;
}

}  // namespace

Answer<Pixels> believedPixels(DecodedPixels said, const Opened& opened, int pixelFile) {
  const Fault lie{FaultKind::crashed};
  if (!sealSize(pixelFile)) return lie;
  const auto size = sizeOf(pixelFile);
  if (!size || !fitsTogether(said.layout, opened) || !liesWithin(said, *size)) return lie;
  if (!sealContents(pixelFile)) return lie;
  auto bytes = mapPixels(pixelFile, said.offset, said.size);
  if (!bytes) return Fault{FaultKind::limit, LimitName::decodedBytes};
  return Pixels{said.layout, std::move(*bytes), std::move(said.profile)};
}

}  // namespace ostra
