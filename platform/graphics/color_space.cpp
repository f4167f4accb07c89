#include "platform/graphics/color_space.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <iterator>
#include <mutex>

#include "platform/graphics/color_space_contents.h"
#include "platform/graphics/icc_description.h"
#include "platform/graphics/icc_writer.h"
#include "platform/graphics/named_spaces.h"
#include "platform/graphics/profile_transform.h"

namespace ostra {
namespace {

/// Thousands of pictures of one camera carry the same profile; the last few are remembered.
class RecentSpaces {
 public:
  CGColorSpaceRef find(ByteView profile) {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(spaces_.begin(), spaces_.end(), [&](const CGColorSpaceRef& space) {
      return std::ranges::equal(space->iccData(), profile);
    });
    return found == spaces_.end() ? nullptr : *found;
  }

  void remember(const CGColorSpaceRef& space) {
    const std::lock_guard lock(mutex_);
    spaces_.push_front(space);
    if (spaces_.size() > capacity) spaces_.pop_back();
  }

 private:
  static constexpr std::size_t capacity = 8;
  std::mutex mutex_;
  std::deque<CGColorSpaceRef> spaces_;
};

RecentSpaces& recentSpaces() {
  static RecentSpaces spaces;
  return spaces;
}

CGColorSpaceRef spaceOfProfile(const CheckedProfile& profile, ByteView bytes) {
  if (!libraryConvertsFrom(bytes)) return nullptr;
  auto contents = std::make_unique<CGColorSpace::Contents>();
  contents->model = profile.model();
  contents->components = profile.components();
  contents->icc.assign(bytes.begin(), bytes.end());
  contents->description = iccDescription(profile);
  contents->shaper = Shaper::ofProfile(profile);
  return std::make_shared<CGColorSpace>(std::move(contents));
}

/// Imaginary primaries are in use, but none lies far outside the diagram.
bool areChromaticities(const double (&primaries)[6]) {
  return std::all_of(std::begin(primaries), std::end(primaries),
                     [](double value) { return std::abs(value) <= 2; });
}

/// Columns of the XYZ of red, green and blue at full strength, which add up to the white; adapted to D50.
std::optional<Matrix3> colorantsOf(const double (&white)[2], const double (&primaries)[6]) {
  if (!areChromaticities(primaries)) return std::nullopt;
  const auto adaptation = adaptationToD50({white[0], white[1]});
  Matrix3 columns{};
  for (std::size_t i = 0; i < 3; ++i) {
    const double x = primaries[2 * i], y = primaries[2 * i + 1];
    columns[0][i] = x, columns[1][i] = y, columns[2][i] = 1 - x - y;
  }
  const auto solved = inverse(columns);
  if (!adaptation || !solved) return std::nullopt;
  const std::array<double, 3> whiteXYZ = {white[0] / white[1], 1, (1 - white[0] - white[1]) / white[1]};
  for (std::size_t i = 0; i < 3; ++i) {
    const double strength =
        (*solved)[i][0] * whiteXYZ[0] + (*solved)[i][1] * whiteXYZ[1] + (*solved)[i][2] * whiteXYZ[2];
    for (auto& row : columns) row[i] *= strength;
  }
  return product(*adaptation, columns);
}

std::optional<std::array<std::int32_t, 9>> colorantWords(const Matrix3& colorants) {
  constexpr double mostThatMakesSense = 16;
  std::array<std::int32_t, 9> words{};
  for (std::size_t i = 0; i < 9; ++i) {
    const double value = colorants[i % 3][i / 3];
    if (!(std::abs(value) < mostThatMakesSense)) return std::nullopt;
    words[i] = fixedWord(value);
  }
  return words;
}

}  // namespace

CGColorSpace::CGColorSpace(std::unique_ptr<Contents> contents) : contents_(std::move(contents)) {}
CGColorSpace::~CGColorSpace() = default;
CGColorSpaceModel CGColorSpace::model() const { return contents_->model; }
std::optional<std::string_view> CGColorSpace::name() const { return contents_->name; }
ByteView CGColorSpace::iccData() const { return contents_->icc; }
const std::string& CGColorSpace::profileDescription() const { return contents_->description; }
int CGColorSpace::numberOfComponents() const { return contents_->components; }

CGColorSpaceRef CGColorSpace::createWithICCData(ByteView profile) {
  if (auto named = namedSpaceOfProfile(profile)) return named;
  if (auto recent = recentSpaces().find(profile)) return recent;
  const auto checked = CheckedProfile::of(profile);
  if (!checked) return nullptr;
  auto space = spaceOfProfile(*checked, profile);
  if (space) recentSpaces().remember(space);
  return space;
}

CGColorSpaceRef CGColorSpace::createCalibrated(const double (&white)[2], const double (*primaries)[6],
                                               double gamma) {
  constexpr double steepest = 100;
  if (!(gamma > 1 / steepest) || !(gamma < steepest) || !adaptationToD50({white[0], white[1]}))
    return nullptr;
  ProfileNumbers numbers;
  numbers.description = primaries != nullptr ? "Calibrated RGB" : "Calibrated Gray";
  numbers.curve[0] = fixedWord(gamma);
  numbers.white = {white[0], white[1]};
  if (primaries != nullptr) {
    const auto colorants = colorantsOf(white, *primaries);
    numbers.colorants = colorants ? colorantWords(*colorants) : std::nullopt;
    if (!numbers.colorants) return nullptr;
  }
  return createWithICCData(writeProfile(numbers));
}

bool sameSpace(const CGColorSpace& one, const CGColorSpace& other) {
  return &one == &other || (!one.iccData().empty() && std::ranges::equal(one.iccData(), other.iccData()));
}

}  // namespace ostra
