#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/imageio/codecs/bmp.h"
#include "platform/imageio/codecs/bmp_colour.h"
#include "platform/imageio/codecs/dots_a_metre.h"
#include "platform/imageio/codecs/little_endian.h"
#include "platform/imageio/codecs/plain_rows.h"
#include "platform/imageio/codecs/written_profile.h"
#include "platform/imageio/limits.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {
namespace {

constexpr std::uint32_t kFileHeader = 14, kInfoHeader = 40, kVersion5Header = 124;
constexpr std::uint32_t kGrays = 256;

// What the header says, before it has bytes.
struct Plan {
  unsigned bits = 24;
  bool newest = false;  // the header that holds masks and a profile
  std::uint32_t dataAt = 0, dataSize = 0, rowBytes = 0;
  Bytes profile;
};

// The oldest header that can say it all: every reader knows that one.
std::optional<Plan> planFor(const Pixels& pixels, const PlainRows& rows) {
  const Layout& layout = pixels.layout;
  Plan plan;
  plan.bits = 8 * rows.blueFirstSamples();
  if (needsProfile(pixels.profile, layout.model)) {
    // Gray with alpha becomes RGB, which a gray profile does not describe.
    auto profile = writtenProfile(pixels.profile, layout.model);
    if (!profile || (rows.colours() == 1 && rows.hasAlpha())) return std::nullopt;
    plan.profile = std::move(*profile);
  }
  plan.newest = rows.hasAlpha() || !plan.profile.empty();
  plan.dataAt =
      kFileHeader + (plan.newest ? kVersion5Header : kInfoHeader) + (plan.bits == 8 ? kGrays * 4 : 0);
  const std::uint64_t rowBytes = (std::uint64_t{layout.width} * plan.bits + 31) / 32 * 4;
  const auto size = checkedProduct(rowBytes, layout.height);
  constexpr std::uint64_t kLargestFile = std::numeric_limits<std::uint32_t>::max();
  constexpr std::uint32_t kLongestSide = std::numeric_limits<std::int32_t>::max();
  if (layout.width > kLongestSide || layout.height > kLongestSide) return std::nullopt;
  if (!size || *size > kLargestFile - plan.dataAt - plan.profile.size()) return std::nullopt;
  plan.rowBytes = static_cast<std::uint32_t>(rowBytes);
  plan.dataSize = static_cast<std::uint32_t>(*size);
  return plan;
}

void appendHeaders(Bytes& file, const Layout& layout, const Plan& plan, const Properties* properties) {
  const auto profileSize = static_cast<std::uint32_t>(plan.profile.size());
  file.insert(file.end(), {'B', 'M'});
  appendLittleEndian32(file, plan.dataAt + plan.dataSize + profileSize);
  appendLittleEndian32(file, 0);
  appendLittleEndian32(file, plan.dataAt);
  appendLittleEndian32(file, plan.newest ? kVersion5Header : kInfoHeader);
  appendLittleEndian32(file, layout.width);
  appendLittleEndian32(file, layout.height);
  appendLittleEndian16(file, 1);
  appendLittleEndian16(file, plan.bits);
  appendLittleEndian32(file, plan.bits == 32 ? 3 : 0);
  appendLittleEndian32(file, plan.dataSize);
  const auto density = properties != nullptr ? statedDensity(properties->tree) : std::nullopt;
  appendLittleEndian32(file, density ? metresFromInches(density->x) : 0);
  appendLittleEndian32(file, density ? metresFromInches(density->y) : 0);
  appendLittleEndian32(file, plan.bits == 8 ? kGrays : 0);
  appendLittleEndian32(file, 0);
  if (plan.newest) {
    for (const std::uint32_t mask : {0x00FF0000U, 0x0000FF00U, 0x000000FFU, 0xFF000000U})
      appendLittleEndian32(file, plan.bits == 32 ? mask : 0);
    const Bytes colour = writtenBmpColour(plan.dataAt - kFileHeader + plan.dataSize, profileSize);
    file.insert(file.end(), colour.begin(), colour.end());
  }
  for (std::uint32_t gray = 0; plan.bits == 8 && gray < kGrays; ++gray)
    appendLittleEndian32(file, gray * 0x010101);
}

}  // namespace

Answer<Bytes> encodeBmp(const Pixels& pixels, const Properties* properties) {
  const Layout& layout = pixels.layout;
  if (layout.model != CGColorSpaceModel::rgb && layout.model != CGColorSpaceModel::monochrome)
    return Fault{FaultKind::damaged};
  PlainRows rows(pixels, 8);
  const auto plan = planFor(pixels, rows);
  if (!plan) return Fault{FaultKind::damaged};
  Bytes file;
  file.reserve(std::size_t{plan->dataAt} + plan->dataSize + plan->profile.size());
  appendHeaders(file, layout, *plan, properties);
  file.resize(std::size_t{plan->dataAt} + plan->dataSize);
  for (std::uint32_t y = 0; y < layout.height; ++y) {
    const std::size_t stored = layout.height - 1 - y;
    rows.storeBlueFirst(y, file.data() + plan->dataAt + stored * plan->rowBytes);
  }
  file.insert(file.end(), plan->profile.begin(), plan->profile.end());
  return file;
}

}  // namespace ostra
