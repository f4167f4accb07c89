#include "platform/graphics/color_space.h"

#include <algorithm>
#include <deque>
#include <mutex>

#include "platform/graphics/color_space_contents.h"
#include "platform/graphics/icc_description.h"
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

CGColorSpaceRef spaceOfProfile(const CheckedProfile& profile) {
  const ByteView bytes = profile.bytes();
  auto shaper = Shaper::ofProfile(profile);
  if (!shaper && !libraryConvertsFrom(bytes)) return nullptr;
  auto contents = std::make_unique<CGColorSpace::Contents>();
  contents->model = profile.model();
  contents->components = profile.components();
  contents->icc.assign(bytes.begin(), bytes.end());
  contents->description = iccDescription(profile);
  contents->shaper = std::move(shaper);
  return std::make_shared<CGColorSpace>(std::move(contents));
}

}  // namespace

CGColorSpace::CGColorSpace(std::unique_ptr<Contents> contents) : contents_(std::move(contents)) {}
CGColorSpace::~CGColorSpace() = default;
CGColorSpaceModel CGColorSpace::model() const { return contents_->model; }
std::optional<std::string_view> CGColorSpace::name() const { return contents_->name; }
ByteView CGColorSpace::iccData() const { return contents_->icc; }
const std::string& CGColorSpace::profileDescription() const { return contents_->description; }
int CGColorSpace::numberOfComponents() const { return contents_->components; }

CGColorSpaceRef CGColorSpace::createWithICCData(ByteView data) {
  const auto checked = CheckedProfile::of(data);
  if (!checked) return nullptr;
  const ByteView profile = checked->bytes();
  if (auto named = namedSpaceOfProfile(profile)) return named;
  if (auto recent = recentSpaces().find(profile)) return recent;
  auto space = spaceOfProfile(*checked);
  if (space) recentSpaces().remember(space);
  return space;
}

bool sameSpace(const CGColorSpace& one, const CGColorSpace& other) {
  return &one == &other || (!one.iccData().empty() && std::ranges::equal(one.iccData(), other.iccData()));
}

}  // namespace ostra
