#include "tests/faults/deflated.h"

#include <algorithm>
#include <string_view>

#include <zlib.h>

#include "tests/faults/picture_parts.h"

namespace ostra::test {
namespace {

constexpr std::size_t kHead = 8, kChecksum = 4;
constexpr std::size_t kMostPlain = 4u << 20;

std::string_view typeOf(ByteView chunk) {
  if (chunk.size() < kHead + kChecksum) return {};
  return {reinterpret_cast<const char*>(chunk.data()) + 4, 4};
}

}  // namespace

std::size_t packedBegin(ByteView chunk) {
  const std::string_view type = typeOf(chunk);
  if (type == "IDAT") return kHead;
  if (type != "iCCP" && type != "zTXt") return 0;
  // A name, its end, and the method.
  const auto end = std::find(chunk.begin() + kHead, chunk.end() - kChecksum, 0);
  const auto begin = static_cast<std::size_t>(end - chunk.begin()) + 2;
  return begin < chunk.size() - kChecksum ? begin : 0;
}

std::optional<Bytes> unpacked(ByteView chunk) {
  const std::size_t begin = packedBegin(chunk);
  Bytes plain(kMostPlain);
  z_stream stream{};
  if (begin == 0 || inflateInit(&stream) != Z_OK) return std::nullopt;
  stream.next_in = const_cast<Bytef*>(chunk.data() + begin);
  stream.avail_in = static_cast<unsigned>(chunk.size() - kChecksum - begin);
  stream.next_out = plain.data();
  stream.avail_out = static_cast<unsigned>(plain.size());
  inflate(&stream, Z_FINISH);
  const bool full = stream.avail_out == 0;
  plain.resize(stream.total_out);
  inflateEnd(&stream);
  return full ? std::nullopt : std::optional(std::move(plain));
}

void repack(Bytes& chunk, ByteView plain) {
  uLongf size = compressBound(plain.size());
  Bytes packed(size);
  if (compress2(packed.data(), &size, plain.data(), plain.size(), 1) != Z_OK) return;
  packed.resize(size);
  const Bytes checksum(chunk.end() - kChecksum, chunk.end());
  chunk.resize(packedBegin(chunk));
  chunk.insert(chunk.end(), packed.begin(), packed.end());
  putBigEndian(chunk, 0, 4, static_cast<std::uint32_t>(chunk.size() - kHead));
  chunk.insert(chunk.end(), checksum.begin(), checksum.end());
}

}  // namespace ostra::test
