#include "tests/platform/imageio/modules/boxes.h"

#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {

Bytes big32(std::size_t value) {
  Bytes bytes;
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  return bytes;
}

Bytes box(std::string_view type, const Bytes& content) {
  return joined({big32(content.size() + 8), bytesOfText(type), content});
}

}  // namespace ostra::test
