#include "platform/imageio/codecs/heif_transforms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace ostra {
namespace {

/// Where the picture's axes go: x' = a x + b y, y' = c x + d y, y pointing down.
struct Turn {
  int a = 1, b = 0, c = 0, d = 1;
  friend bool operator==(const Turn&, const Turn&) = default;
};

/// By Exif's number less 1.
constexpr std::array<Turn, 8> kOrientations = {{{1, 0, 0, 1},
                                                {-1, 0, 0, 1},
                                                {-1, 0, 0, -1},
                                                {1, 0, 0, -1},
                                                {0, 1, 1, 0},
                                                {0, -1, 1, 0},
                                                {0, -1, -1, 0},
                                                {0, 1, -1, 0}}};
constexpr std::array<Turn, 4> kQuarters = {kOrientations[0], kOrientations[7], kOrientations[2],
                                           kOrientations[5]};
constexpr std::array<Turn, 2> kMirrors = {kOrientations[3], kOrientations[1]};

Turn then(const Turn& first, const Turn& second) {
  return {second.a * first.a + second.b * first.c, second.a * first.b + second.b * first.d,
          second.c * first.a + second.d * first.c, second.c * first.b + second.d * first.d};
}

int numberOf(const Turn& turn) {
  return static_cast<int>(std::find(kOrientations.begin(), kOrientations.end(), turn) -
                          kOrientations.begin()) +
         1;
}

/// In stored pixels: its size, and its centre as seen from that of the whole.
struct Window {
  double x = 0, y = 0, width = 0, height = 0;
};

// Width, height and the centre's offsets across and down, each a signed fraction.
bool narrow(ByteView clap, const Turn& turn, Window& window) {
  BmffFields fields(clap);
  std::array<double, 4> numbers{};
  for (double& number : numbers) {
    const auto above = static_cast<std::int32_t>(fields.number32());
    const auto below = static_cast<std::int32_t>(fields.number32());
    if (below == 0) return false;
    number = static_cast<double>(above) / below;
  }
  if (!fields.isIntact()) return false;
  auto [width, height, x, y] = numbers;
  if (turn.a == 0) std::swap(width, height);
  // Back by the turn's inverse, which is its transpose.
  window.x += turn.a * x + turn.c * y;
  window.y += turn.b * x + turn.d * y;
  window.width = width;
  window.height = height;
  return true;
}

std::optional<HeifCrop> wholePixels(const Window& window, std::uint32_t width, std::uint32_t height) {
  const double left = std::round((width - window.width) / 2 + window.x);
  const double top = std::round((height - window.height) / 2 + window.y);
  const double across = std::round(window.width), down = std::round(window.height);
  const bool inside =
      left >= 0 && top >= 0 && across >= 1 && down >= 1 && left + across <= width && top + down <= height;
  if (!inside) return std::nullopt;
  return HeifCrop{static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
                  static_cast<std::uint32_t>(across), static_cast<std::uint32_t>(down)};
}

}  // namespace

std::optional<HeifTransforms> heifTransforms(std::span<const BmffBox> properties, std::uint32_t width,
                                             std::uint32_t height) {
  HeifTransforms transforms;
  Turn turn;
  Window window{0, 0, double(width), double(height)};
  for (const BmffBox& property : properties) {
    const unsigned value = property.content.empty() ? 0 : property.content[0];
    const bool rotates = property.type == bmffType("irot");
    if (property.type == bmffType("clap") && !narrow(property.content, turn, window)) return std::nullopt;
    if (rotates) turn = then(turn, kQuarters[value & 3]);
    if (property.type == bmffType("imir")) turn = then(turn, kMirrors[value & 1]);
    transforms.isTurned = transforms.isTurned || rotates || property.type == bmffType("imir");
  }
  const auto crop = wholePixels(window, width, height);
  if (!crop) return std::nullopt;
  transforms.crop = *crop;
  transforms.orientation = numberOf(turn);
  return transforms;
}

HeifTurn heifTurn(int orientation) {
  for (std::uint8_t quarters = 0; quarters < 4; ++quarters) {
    if (numberOf(kQuarters[quarters]) == orientation) return {quarters, std::nullopt};
  }
  for (std::uint8_t quarters = 0; quarters < 2; ++quarters) {
    for (std::uint8_t mirror = 0; mirror < 2; ++mirror) {
      if (numberOf(then(kQuarters[quarters], kMirrors[mirror])) == orientation) return {quarters, mirror};
    }
  }
  return {};
}

}  // namespace ostra
