#include "platform/imageio/codecs/gif_extensions.h"

#include <algorithm>
#include <array>

#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

constexpr std::size_t kNameSize = 11;

// 1, all numbers from 255 to 0, and the end.
constexpr std::array<std::uint8_t, 258> landing() {
  std::array<std::uint8_t, 258> bytes{};
  bytes[0] = 1;
  for (std::size_t i = 0; i < 256; ++i) bytes[1 + i] = static_cast<std::uint8_t>(255 - i);
  return bytes;
}
constexpr auto kLanding = landing();

bool endsInLanding(ByteView data) {
  return data.size() >= kLanding.size() && std::equal(kLanding.rbegin(), kLanding.rend(), data.rbegin());
}

void demand(std::size_t size, std::size_t limit, LimitName name) {
  if (size > limit) throw LimitExceeded{name};
}

}  // namespace

std::optional<GifApplication> readGifApplication(const GifBlock& block) {
  const bool isApplication = !block.frame && block.isWhole && block.label == kGifApplication;
  if (!isApplication || block.data.size() <= 1 + kNameSize || block.data[0] != kNameSize) return std::nullopt;
  return GifApplication{asText(block.data.subspan(1, kNameSize)), block.data.subspan(1 + kNameSize)};
}

Bytes joinedSubBlocks(ByteView subBlocks, std::size_t limit, LimitName name) {
  Bytes bytes;
  while (!subBlocks.empty() && subBlocks[0] != 0) {
    const std::size_t size = std::min<std::size_t>(subBlocks[0], subBlocks.size() - 1);
    demand(bytes.size() + size, limit, name);
    const ByteView part = subBlocks.subspan(1, size);
    bytes.insert(bytes.end(), part.begin(), part.end());
    subBlocks = subBlocks.subspan(1 + size);
  }
  return bytes;
}

void appendSubBlocks(Bytes& file, ByteView bytes) {
  constexpr std::size_t kMost = 255;
  while (!bytes.empty()) {
    const ByteView part = bytes.first(std::min(bytes.size(), kMost));
    file.push_back(static_cast<std::uint8_t>(part.size()));
    file.insert(file.end(), part.begin(), part.end());
    bytes = bytes.subspan(part.size());
  }
  file.push_back(0);
}

Bytes readGifXmp(ByteView data, std::size_t limit) {
  if (!endsInLanding(data)) return joinedSubBlocks(data, limit, LimitName::metadataBytes);
  const ByteView packet = data.first(data.size() - kLanding.size());
  demand(packet.size(), limit, LimitName::metadataBytes);
  return Bytes(packet.begin(), packet.end());
}

Bytes gifXmpExtension(ByteView packet) {
  if (std::find(packet.begin(), packet.end(), 0) != packet.end()) return {};
  Bytes extension = {0x21, kGifApplication, kNameSize};
  extension.insert(extension.end(), kGifXmp.begin(), kGifXmp.end());
  extension.insert(extension.end(), packet.begin(), packet.end());
  extension.insert(extension.end(), kLanding.begin(), kLanding.end());
  return extension;
}

}  // namespace ostra
