#include "fuzz/codec_round_trip.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace ostra {
namespace {

Limits smallLimits() {
  Limits limits;
  limits.pixels = 1 << 20;
  limits.decodedBytes = 16 << 20;
  limits.metadataBytes = 1 << 20;
  limits.profileBytes = 1 << 20;
  limits.frames = 100;
  limits.seconds = 10;
  return limits;
}

// Formats that hold more than their writer takes.
std::uint32_t longestSideOf(std::string_view type) {
  if (type == "com.microsoft.ico") return 256;
  return std::numeric_limits<std::uint32_t>::max();
}

}  // namespace

void roundTripCodec(std::string_view type, ByteView file) {
  const Codec& codec = *codecForType(type);
  if (!codec.matches(file.first(std::min(file.size(), kSignatureBytes)))) return;
  auto opened = codec.open(file, smallLimits());
  if (std::holds_alternative<Fault>(opened)) return;
  CodecReader& reader = *std::get<std::unique_ptr<CodecReader>>(opened);
  const auto properties = reader.properties(0, smallLimits());
  const auto pixels = reader.decode(0, smallLimits());
  if (!std::holds_alternative<Pixels>(pixels)) return;
  if (codec.encode == nullptr) return;
  const auto* known = std::get_if<Properties>(&properties);
  auto written = codec.encode(std::get<Pixels>(pixels), known);
  if (std::holds_alternative<Fault>(written)) {
    Pixels bare = std::get<Pixels>(pixels);
    bare.profile = Untagged{};
    written = codec.encode(bare, nullptr);
  }
  const Bytes* bytes = std::get_if<Bytes>(&written);
  const Layout& layout = std::get<Pixels>(pixels).layout;
  if (bytes == nullptr && std::max(layout.width, layout.height) > longestSideOf(type)) return;
  if (bytes == nullptr) std::abort();
  auto again = codec.open(*bytes, Limits{});
  if (std::holds_alternative<Fault>(again)) std::abort();
  const auto back = std::get<std::unique_ptr<CodecReader>>(again)->decode(0, Limits{});
  if (!std::holds_alternative<Pixels>(back)) std::abort();
}

}  // namespace ostra
