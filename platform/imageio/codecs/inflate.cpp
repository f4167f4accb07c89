#include "platform/imageio/codecs/inflate.h"

#include <algorithm>
#include <memory>
#include <new>

#include <zlib.h>

namespace ostra {

std::optional<Bytes> inflateAll(ByteView stream, std::size_t limit, LimitName name) {
  z_stream z{};
  if (inflateInit(&z) != Z_OK) throw std::bad_alloc();  // nothing has been read yet
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&z, inflateEnd);
  // Chunks are below 2 GiB.
  z.next_in = const_cast<Bytef*>(stream.data());
  z.avail_in = static_cast<uInt>(std::min<std::size_t>(stream.size(), 0x7FFFFFFF));
  Bytes bytes;
  for (int state = Z_OK; state == Z_OK;) {
    const std::size_t done = bytes.size();
    const std::size_t room = std::min<std::size_t>(std::max<std::size_t>(done, 4096), 1 << 20);
    bytes.resize(done + room);
    z.next_out = bytes.data() + done;
    z.avail_out = static_cast<uInt>(room);
    state = inflate(&z, Z_NO_FLUSH);
    bytes.resize(done + room - z.avail_out);
    if (state == Z_MEM_ERROR) throw std::bad_alloc();
    if (bytes.size() > limit) throw LimitExceeded{name};
    if (state == Z_STREAM_END) return bytes;
  }
  return std::nullopt;
}

Bytes deflateAll(ByteView bytes) {
  uLongf size = compressBound(bytes.size());
  Bytes stream(size);
  if (compress(stream.data(), &size, bytes.data(), bytes.size()) != Z_OK) throw std::bad_alloc();
  stream.resize(size);
  return stream;
}

}  // namespace ostra
