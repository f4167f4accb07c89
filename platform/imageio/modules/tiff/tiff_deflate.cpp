#include "platform/imageio/modules/tiff/tiff_deflate.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <new>
#include <vector>

#include <zlib.h>

namespace ostra {

bool isSoundDeflate(ByteView stream, std::uint64_t size) {
  z_stream state{};
  if (inflateInit(&state) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&state, inflateEnd);
  std::vector<std::uint8_t> dropped(1 << 16);
  std::uint64_t given = 0;
  state.next_in = const_cast<std::uint8_t*>(stream.data());
  int result = Z_OK;
  while (result == Z_OK && given <= size) {
    const auto left = static_cast<std::uint64_t>(stream.data() + stream.size() - state.next_in);
    state.avail_in = static_cast<uInt>(std::min<std::uint64_t>(left, UINT_MAX));
    state.next_out = dropped.data();
    state.avail_out = static_cast<uInt>(dropped.size());
    result = inflate(&state, Z_NO_FLUSH);
    given += dropped.size() - state.avail_out;
  }
  return result == Z_STREAM_END && given == size;
}

}  // namespace ostra
