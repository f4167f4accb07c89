#include "tests/system/deflated_zeros.h"

#include <algorithm>

#include <zlib.h>

namespace ostra::test {

Bytes deflatedZeros(std::size_t size) {
  z_stream z{};
  deflateInit(&z, 9);
  const Bytes zeros(std::size_t{1} << 20);
  Bytes stream(size / 500 + 1024);
  z.next_out = stream.data();
  z.avail_out = static_cast<uInt>(stream.size());
  for (std::size_t left = size; left > 0;) {
    const std::size_t part = std::min(left, zeros.size());
    z.next_in = const_cast<Bytef*>(zeros.data());
    z.avail_in = static_cast<uInt>(part);
    left -= part;
    deflate(&z, left == 0 ? Z_FINISH : Z_NO_FLUSH);
  }
  stream.resize(z.total_out);
  deflateEnd(&z);
  return stream;
}

}  // namespace ostra::test
