#pragma once
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "platform/foundation/url.h"
#include "platform/foundation/value.h"

namespace ostra {

/// What is known of an installed profile, by the keys below. Any of them may be missing, and any value of
/// another kind than it should be: look before you use.
using ColorSyncProfileInfo = std::map<std::string, std::variant<Value, URL>, std::less<>>;

/// Its description in the user's language: a text.
inline constexpr std::string_view kColorSyncProfileDescription = "ProfileDescription";
/// Its file: a URL.
inline constexpr std::string_view kColorSyncProfileURL = "ProfileURL";
/// The signatures of its colour space and of its class: texts of four characters, such as "RGB " and "mntr".
inline constexpr std::string_view kColorSyncProfileColorSpace = "ProfileColorSpace";
inline constexpr std::string_view kColorSyncProfileClass = "ProfileClass";

/// True asks for the next profile. The information may be null.
using ColorSyncProfileIterateCallback = std::function<bool(const ColorSyncProfileInfo* info)>;

/// Calls back for every installed profile, one after another, before it returns. Their contents are not
/// checked: only header and description have been read.
void ColorSyncIterateInstalledProfiles(const ColorSyncProfileIterateCallback& callback);

/// The service behind it. Replaceable through `Service<ProfileEnumeration>`.
class ProfileEnumeration {
 public:
  virtual ~ProfileEnumeration() = default;
  virtual void iterate(const ColorSyncProfileIterateCallback& callback) = 0;
  /// The profiles in the desktop's folders: the user's own first, then the system's; in a folder by file
  /// name, then its subfolders by theirs.
  static ProfileEnumeration& standard();
};

}  // namespace ostra
