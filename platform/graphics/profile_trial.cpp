#include "platform/graphics/profile_trial.h"

#include <cmath>
#include <vector>

#include "platform/graphics/icc_check.h"
#include "platform/graphics/named_spaces.h"
#include "platform/graphics/profile_transform.h"

namespace ostra {
namespace {

/// So many steps a component that the grid has a few hundred colours.
std::size_t stepsFor(int components) {
  constexpr double colors = 256;
  return static_cast<std::size_t>(std::max(2.0, std::floor(std::pow(colors, 1.0 / components))));
}

/// Interleaved, every combination of evenly spaced values.
std::vector<std::uint16_t> grid(int components) {
  const std::size_t steps = stepsFor(components);
  std::size_t count = 1;
  for (int i = 0; i < components; ++i) count *= steps;
  std::vector<std::uint16_t> words;
  words.reserve(count * static_cast<std::size_t>(components));
  for (std::size_t color = 0; color < count; ++color) {
    std::size_t rest = color;
    for (int i = 0; i < components; ++i, rest /= steps)
      words.push_back(static_cast<std::uint16_t>(rest % steps * 65535 / (steps - 1)));
  }
  return words;
}

void runThrough(ByteView from, ByteView to) {
  const auto transform = ProfileTransform::create(from, to, CGColorRenderingIntent::standard);
  if (transform == nullptr) return;
  const auto in = static_cast<std::size_t>(transform->sourceComponents());
  const auto out = static_cast<std::size_t>(transform->destinationComponents());
  const auto colors = grid(transform->sourceComponents());
  std::vector<std::uint16_t> converted(colors.size() / in * out);
  transform->run(colors.data(), converted.data(), colors.size() / in);
}

class LibraryTrial final : public ProfileTrial {
 public:
  void run(ByteView profile) override {
    const auto checked = CheckedProfile::of(profile);
    // The library is only told the numbers of a profile of curves.
    if (!checked || Shaper::ofProfile(*checked)) return;
    if (!libraryConvertsFrom(checked->bytes())) return;
    const CGColorSpaceRef known = namedSpace(kCGColorSpaceSRGB);
    runThrough(checked->bytes(), known->iccData());
    runThrough(known->iccData(), checked->bytes());
  }
};

}  // namespace

ProfileTrial& ProfileTrial::standard() {
  static LibraryTrial trial;
  return trial;
}

}  // namespace ostra
