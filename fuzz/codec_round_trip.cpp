#include "fuzz/codec_round_trip.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "platform/imageio/within_memory.h"

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

std::optional<RoundTrip> roundTripCodec(std::string_view type, ByteView file) {
  const Codec& codec = *codecForType(type);
  if (!codec.matches(file.first(std::min(file.size(), kSignatureBytes)))) return std::nullopt;
  const CodecFunctions& functions = *functionsOf(codec);
  auto opened = withinMemory([&] { return functions.open(file, smallLimits()); });
  if (std::holds_alternative<Fault>(opened)) return std::nullopt;
  CodecReader& reader = *std::get<std::unique_ptr<CodecReader>>(opened);
  const auto properties = withinMemory([&] { return reader.properties(0, smallLimits()); });
  const auto pixels = withinMemory([&] { return reader.decode(0, smallLimits()); });
  if (!std::holds_alternative<Pixels>(pixels) || functions.encode == nullptr) return std::nullopt;
  const auto* known = std::get_if<Properties>(&properties);
  auto written = functions.encode(std::get<Pixels>(pixels), known);
  if (std::holds_alternative<Fault>(written)) {
    Pixels bare = std::get<Pixels>(pixels);
    bare.profile = Untagged{};
    written = functions.encode(bare, nullptr);
  }
  const Bytes* bytes = std::get_if<Bytes>(&written);
  const Layout& layout = std::get<Pixels>(pixels).layout;
  if (bytes == nullptr && std::max(layout.width, layout.height) > longestSideOf(type)) return std::nullopt;
  const bool isInk = layout.model == CGColorSpaceModel::cmyk;
  if (bytes == nullptr && isInk && type == "public.jpeg-2000") return std::nullopt;
  if (bytes == nullptr) std::abort();
  auto again = functions.open(*bytes, Limits{});
  if (std::holds_alternative<Fault>(again)) std::abort();
  auto back = std::get<std::unique_ptr<CodecReader>>(again)->decode(0, Limits{});
  if (!std::holds_alternative<Pixels>(back)) std::abort();
  return RoundTrip{std::get<Pixels>(pixels), std::get<Pixels>(std::move(back))};
}

}  // namespace ostra
