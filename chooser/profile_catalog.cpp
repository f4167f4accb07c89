#include "chooser/profile_catalog.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "platform/colorsync/profiles.h"
#include "platform/foundation/data_reading.h"
#include "platform/foundation/error.h"
#include "platform/foundation/text_comparison.h"

namespace ostra {
namespace {

struct BuiltIn {
  std::string_view title;
  std::string_view spaceName;
};

constexpr std::array<BuiltIn, 8> kBuiltIns{{
    {"sRGB IEC61966-2.1", kCGColorSpaceSRGB},
    {"Display P3", kCGColorSpaceDisplayP3},
    {"Adobe RGB (1998)", kCGColorSpaceAdobeRGB1998},
    {"ProPhoto RGB (ROMM)", kCGColorSpaceROMMRGB},
    {"Rec. 2020 (ITU-R BT.2020)", kCGColorSpaceITUR_2020},
    {"DCI-P3", kCGColorSpaceDCIP3},
    {"Linear sRGB", kCGColorSpaceLinearSRGB},
    {"Generic Gray Gamma 2.2", kCGColorSpaceGenericGrayGamma2_2},
}};

/// An installed profile as the enumeration tells of it; nothing of it is believed yet.
struct Found {
  std::string description;
  URL file;
  std::string key;  // the signatures of its space and its class, with a bar between
};

template <class T>
const T* valueAt(const ColorSyncProfileInfo& info, std::string_view key) {
  const auto found = info.find(key);
  if (found == info.end()) return nullptr;
  if constexpr (std::is_same_v<T, URL>) {
    return std::get_if<URL>(&found->second);
  } else {
    const auto* value = std::get_if<Value>(&found->second);
    return value != nullptr ? value->get<T>() : nullptr;
  }
}

std::optional<Found> foundIn(const ColorSyncProfileInfo& info) {
  const auto* description = valueAt<std::string>(info, kColorSyncProfileDescription);
  const auto* file = valueAt<URL>(info, kColorSyncProfileURL);
  const auto* space = valueAt<std::string>(info, kColorSyncProfileColorSpace);
  if (description == nullptr || file == nullptr || space == nullptr) return std::nullopt;
  const auto* profileClass = valueAt<std::string>(info, kColorSyncProfileClass);
  return Found{*description, *file, *space + "|" + (profileClass != nullptr ? *profileClass : "")};
}

std::vector<Found> findInstalled() {
  std::vector<Found> found;
  ColorSyncIterateInstalledProfiles([&found](const ColorSyncProfileInfo* info) {
    if (info == nullptr) return true;
    if (auto profile = foundIn(*info)) found.push_back(*std::move(profile));
    return true;
  });
  return found;
}

/// Of profiles with the same name the one that was found first comes first, and is preferred below.
void sortByName(std::vector<Found>& found) {
  std::stable_sort(found.begin(), found.end(), [](const Found& one, const Found& other) {
    return localizedCaseInsensitiveCompare(one.description, other.description) ==
           NSComparisonResult::orderedAscending;
  });
}

/// The signatures of space and class. Empty pieces are dropped, so a missing one counts as empty.
std::pair<std::string_view, std::string_view> signaturesOf(std::string_view key) {
  std::array<std::string_view, 2> pieces;
  for (std::size_t count = 0; count < pieces.size() && !key.empty();) {
    const std::string_view piece = key.substr(0, key.find('|'));
    if (!piece.empty()) pieces[count++] = piece;
    key.remove_prefix(std::min(piece.size() + 1, key.size()));
  }
  return {pieces[0], pieces[1]};
}

/// Whether the signatures leave it possible that pictures can be converted to the profile.
bool isCandidate(const Found& found) {
  const auto [space, profileClass] = signaturesOf(found.key);
  if (space != "RGB " && space != "GRAY") return false;  // signatures are four characters
  return profileClass != "link" && profileClass != "abst" && profileClass != "nmcl";
}

std::optional<Bytes> contentsOf(const URL& file) {
  try {
    return dataWithContentsOfURL(file);
  } catch (const NSError&) {
    return std::nullopt;
  }
}

/// The space of the profile, or null when there is none of the two models. Its header said so already, in
/// what was found; here its contents do.
CGColorSpaceRef usableSpace(const URL& file) {
  const std::optional<Bytes> contents = contentsOf(file);
  CGColorSpaceRef space = contents ? CGColorSpace::createWithICCData(*contents) : nullptr;
  if (!space) return nullptr;
  const CGColorSpaceModel model = space->model();
  const bool usable = model == CGColorSpaceModel::rgb || model == CGColorSpaceModel::monochrome;
  return usable ? space : nullptr;
}

}  // namespace

std::vector<OstraColorProfile> OstraColorProfileCatalog::builtIns() {
  std::vector<OstraColorProfile> profiles;
  for (const BuiltIn& builtIn : kBuiltIns) {
    if (CGColorSpaceRef space = CGColorSpace::createWithName(builtIn.spaceName)) {
      profiles.push_back({std::string(builtIn.title), std::move(space)});
    }
  }
  return profiles;
}

std::vector<OstraColorProfile> OstraColorProfileCatalog::installed() {
  std::vector<Found> found = findInstalled();
  sortByName(found);
  std::set<std::string> taken;
  std::vector<OstraColorProfile> profiles;
  for (const Found& each : found) {
    if (!isCandidate(each)) continue;
    // The names are compared before the file is read, which is the dear part. But only a profile that proved
    // usable takes its name: behind a broken one the next of that name has its turn.
    std::string name = lowercased(each.description);
    if (taken.count(name) > 0) continue;
    CGColorSpaceRef space = usableSpace(each.file);
    if (!space) continue;
    taken.insert(std::move(name));
    profiles.push_back({each.description, std::move(space)});
  }
  return profiles;
}

}  // namespace ostra
