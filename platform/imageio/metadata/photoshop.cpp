#include "platform/imageio/metadata/photoshop.h"

#include <cmath>

#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/md5.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {

namespace {

constexpr std::uint16_t kResolution = 1005, kIptc = 1028, kOldThumbnail = 1033, kThumbnail = 1036,
                        kColorProfile = 1039, kIptcDigest = 1061;
/// The horizontal and vertical numbers of ResolutionInfo: 16.16 dots an inch, each with two units for
/// display.
constexpr std::size_t kHorizontal = 0, kVertical = 8, kResolutionSize = 16;

struct Resource {
  std::uint16_t id = 0;
  ByteView whole;  // with its padding, which may be missing at the end
  std::size_t dataOffset = 0;
  std::size_t dataSize = 0;
  ByteView data() const { return whole.subspan(dataOffset, dataSize); }
};

bool isSignature(std::string_view four) {
  return four == "8BIM" || four == "MeSa" || four == "AgHg" || four == "PHUT" || four == "DCSR";
}

/// Takes one resource off the front; nothing when there is none.
std::optional<Resource> takeResource(ByteView& rest) {
  constexpr std::size_t kFixed = 4 + 2;
  if (rest.size() < kFixed + 1 || !isSignature(asText(rest.first(4)))) return std::nullopt;
  const std::size_t nameSize = (std::size_t{rest[kFixed]} + 2) & ~std::size_t{1};
  const std::size_t dataOffset = kFixed + nameSize + 4;
  if (rest.size() < dataOffset) return std::nullopt;
  const std::size_t dataSize = read32(rest, dataOffset - 4, ByteOrder::big);
  if (dataSize > rest.size() - dataOffset) return std::nullopt;
  const std::size_t size = std::min(dataOffset + ((dataSize + 1) & ~std::size_t{1}), rest.size());
  Resource resource{read16(rest, 4, ByteOrder::big), rest.first(size), dataOffset, dataSize};
  rest = rest.subspan(size);
  return resource;
}

void append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

void appendWhole(Bytes& bytes, const Resource& resource) {
  append(bytes, resource.whole);
  if (bytes.size() % 2 != 0) bytes.push_back(0);
}

void appendResource(Bytes& block, std::uint16_t id, ByteView data) {
  append(block, asBytes("8BIM"));
  block.resize(block.size() + 8);  // the number, an empty name, the size
  write16(block, block.size() - 8, id, ByteOrder::big);
  write32(block, block.size() - 4, static_cast<std::uint32_t>(data.size()), ByteOrder::big);
  append(block, data);
  if (block.size() % 2 != 0) block.push_back(0);
}

void writeFixed(Bytes& bytes, std::size_t at, double value) {
  write32(bytes, at, static_cast<std::uint32_t>(std::llround(std::min(value, 32767.0) * 65536)),
          ByteOrder::big);
}

}  // namespace

PhotoshopBlock splitPhotoshop(ByteView block) {
  PhotoshopBlock result;
  while (const auto resource = takeResource(block)) {
    if (resource->id != kIptc) {
      appendWhole(result.resources, *resource);
    } else {
      append(result.iptc, resource->data());
    }
  }
  append(result.resources, block);
  return result;
}

ByteView findPhotoshopResource(ByteView block, std::uint16_t number) {
  while (const auto resource = takeResource(block)) {
    if (resource->id == number) return resource->data();
  }
  return {};
}

Bytes resourcesOutsideDocuments(ByteView resources) {
  constexpr std::uint16_t kCaption = 1008, kCopyrightFlag = 1034, kAddress = 1035;
  Bytes kept;
  while (const auto resource = takeResource(resources)) {
    for (const std::uint16_t number : {kResolution, kCaption, kCopyrightFlag, kAddress, kIptcDigest}) {
      if (resource->id == number) appendWhole(kept, *resource);
    }
  }
  return kept;
}

Bytes joinPhotoshop(ByteView iptc, ByteView resources) {
  Bytes block;
  if (!iptc.empty()) appendResource(block, kIptc, iptc);
  append(block, resources);
  return block;
}

Bytes patchPhotoshop(ByteView resources, const std::optional<Density>& density, bool iptcUnchanged) {
  Bytes result;
  while (const auto resource = takeResource(resources)) {
    const bool stale =
        resource->id == kThumbnail || resource->id == kOldThumbnail || resource->id == kColorProfile;
    if (stale || (resource->id == kIptcDigest && !iptcUnchanged)) continue;
    const std::size_t data = result.size() + resource->dataOffset;
    appendWhole(result, *resource);
    if (resource->id == kResolution && resource->dataSize >= kResolutionSize && density) {
      writeFixed(result, data + kHorizontal, density->x);
      writeFixed(result, data + kVertical, density->y);
    }
  }
  append(result, resources);
  return result;
}

Bytes withIptcDigest(ByteView resources, ByteView iptc) {
  Bytes result;
  appendResource(result, kIptcDigest, md5(iptc));
  // At the end there may be bytes that are no resource and hide what follows them.
  append(result, resources);
  return result;
}

std::optional<Density> photoshopDensity(ByteView resources) {
  while (const auto resource = takeResource(resources)) {
    if (resource->id != kResolution || resource->dataSize < kResolutionSize) continue;
    const Density density{read32(resource->data(), kHorizontal, ByteOrder::big) / 65536.0,
                          read32(resource->data(), kVertical, ByteOrder::big) / 65536.0};
    if (density.x > 0 && density.y > 0) return density;
  }
  return std::nullopt;
}

}  // namespace ostra
