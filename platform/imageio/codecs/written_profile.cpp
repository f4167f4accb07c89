#include "platform/imageio/codecs/written_profile.h"

#include "platform/imageio/profile_space.h"

namespace ostra {

std::optional<Bytes> writtenProfile(const ProfileRecord& profile, CGColorSpaceModel model) {
  if (std::holds_alternative<Untagged>(profile)) return Bytes();
  const CGColorSpaceRef space = statedSpace(profile, model);
  if (space == nullptr) return std::nullopt;
  const ByteView bytes = space->iccData();
  return Bytes(bytes.begin(), bytes.end());
}

bool needsProfile(const ProfileRecord& profile, CGColorSpaceModel model) {
  // A name stands for one object.
  return !std::holds_alternative<Untagged>(profile) && statedSpace(profile, model) != defaultSpace(model);
}

}  // namespace ostra
