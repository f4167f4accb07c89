#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace ostra {

/// The user's settings: a few values by name, kept between runs. A setting that cannot be read counts as
/// absent; one that cannot be written is lost silently. Any thread.
class NSUserDefaults {
 public:
  virtual ~NSUserDefaults() = default;
  virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;
  virtual void setString(std::string_view value, std::string_view key) = 0;

  static NSUserDefaults& standardUserDefaults();
  /// A property list in the user's configuration folder.
  static NSUserDefaults& standard();
};

}  // namespace ostra
