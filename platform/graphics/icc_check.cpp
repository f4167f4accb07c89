#include "platform/graphics/icc_check.h"

#include <algorithm>
#include <iterator>

namespace ostra {
namespace {

constexpr std::size_t headerSize = 128;
constexpr std::size_t tagTable = headerSize + 4;
constexpr std::size_t tagEntrySize = 12;
/// The colour library keeps at most this many.
constexpr std::uint32_t mostTags = 100;

struct DeviceSpace {
  std::uint32_t signature;
  CGColorSpaceModel model;
  int components;
};

constexpr DeviceSpace deviceSpaces[] = {
    {iccSignature("GRAY"), CGColorSpaceModel::monochrome, 1},
    {iccSignature("RGB "), CGColorSpaceModel::rgb, 3},
    {iccSignature("CMYK"), CGColorSpaceModel::cmyk, 4},
    {iccSignature("Lab "), CGColorSpaceModel::lab, 3},
    {iccSignature("XYZ "), CGColorSpaceModel::xyz, 3},
    {iccSignature("CMY "), CGColorSpaceModel::deviceN, 3},
    {iccSignature("HSV "), CGColorSpaceModel::unknown, 3},
    {iccSignature("HLS "), CGColorSpaceModel::unknown, 3},
    {iccSignature("YCbr"), CGColorSpaceModel::unknown, 3},
    {iccSignature("Yxy "), CGColorSpaceModel::unknown, 3},
    {iccSignature("Luv "), CGColorSpaceModel::unknown, 3},
    {iccSignature("2CLR"), CGColorSpaceModel::deviceN, 2},
    {iccSignature("3CLR"), CGColorSpaceModel::deviceN, 3},
    {iccSignature("4CLR"), CGColorSpaceModel::deviceN, 4},
    {iccSignature("5CLR"), CGColorSpaceModel::deviceN, 5},
    {iccSignature("6CLR"), CGColorSpaceModel::deviceN, 6},
    {iccSignature("7CLR"), CGColorSpaceModel::deviceN, 7},
    {iccSignature("8CLR"), CGColorSpaceModel::deviceN, 8},
};

const DeviceSpace* deviceSpace(std::uint32_t signature) {
  const auto* found = std::find_if(std::begin(deviceSpaces), std::end(deviceSpaces),
                                   [&](const DeviceSpace& space) { return space.signature == signature; });
  return found == std::end(deviceSpaces) ? nullptr : found;
}

/// A device link has no space of its own, an abstract profile no device, a named list no continuous values.
bool describesSpace(std::uint32_t profileClass) {
  return profileClass == iccSignature("scnr") || profileClass == iccSignature("mntr") ||
         profileClass == iccSignature("prtr") || profileClass == iccSignature("spac");
}

bool headerIsSound(ByteView bytes) {
  if (bytes.size() < tagTable) return false;
  const std::uint32_t size = iccUInt32(bytes, 0);
  if (size < tagTable || size > bytes.size()) return false;
  const int version = bytes[8];
  return iccUInt32(bytes, 36) == iccSignature("acsp") && version >= 2 && version <= 4 &&
         describesSpace(iccUInt32(bytes, 12)) && deviceSpace(iccUInt32(bytes, 16)) != nullptr;
}

bool tagsLieInside(ByteView profile) {
  const std::uint32_t count = iccUInt32(profile, headerSize);
  if (count == 0 || count > mostTags || tagTable + count * tagEntrySize > profile.size()) return false;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t entry = tagTable + i * tagEntrySize;
    const std::uint64_t offset = iccUInt32(profile, entry + 4);
    const std::uint64_t size = iccUInt32(profile, entry + 8);
    if (offset < tagTable + count * tagEntrySize || size < 8 || offset + size > profile.size()) return false;
  }
  return true;
}

}  // namespace

std::uint16_t iccUInt16(ByteView bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

std::uint32_t iccUInt32(ByteView bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(iccUInt16(bytes, offset)) << 16 | iccUInt16(bytes, offset + 2);
}

double iccFixed(ByteView bytes, std::size_t offset) {
  return static_cast<std::int32_t>(iccUInt32(bytes, offset)) / 65536.0;
}

std::optional<CheckedProfile> CheckedProfile::of(ByteView bytes) {
  if (!headerIsSound(bytes)) return std::nullopt;
  const ByteView profile = bytes.first(iccUInt32(bytes, 0));
  if (!tagsLieInside(profile)) return std::nullopt;
  return CheckedProfile(profile);
}

ByteView CheckedProfile::tag(std::uint32_t signature) const {
  const std::uint32_t count = iccUInt32(bytes_, headerSize);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t entry = tagTable + i * tagEntrySize;
    if (iccUInt32(bytes_, entry) == signature)
      return bytes_.subspan(iccUInt32(bytes_, entry + 4), iccUInt32(bytes_, entry + 8));
  }
  return {};
}

CGColorSpaceModel CheckedProfile::model() const { return deviceSpace(colorSpace())->model; }
int CheckedProfile::components() const { return deviceSpace(colorSpace())->components; }

}  // namespace ostra
