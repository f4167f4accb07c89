#pragma once
#include <optional>
#include <string_view>

#include "platform/foundation/url.h"
#include "platform/foundation/value.h"

namespace ostra {

/// The bundle that the process runs: its property list. Read from any thread.
class NSBundle {
 public:
  virtual ~NSBundle() = default;
  /// The value under `key` in the property list, in the user's language where the bundle has it; or nothing.
  virtual std::optional<Value> objectForInfoDictionaryKey(std::string_view key) const = 0;

  static NSBundle& mainBundle();
  /// A bundle without a property list: what runs before the host has named one.
  static NSBundle& standard();
};

/// A bundle whose property list is given: what the host makes of the folder that it was asked to run.
class PropertyListBundle : public NSBundle {
 public:
  explicit PropertyListBundle(Dictionary info) : info_(std::move(info)) {}
  std::optional<Value> objectForInfoDictionaryKey(std::string_view key) const override;

 private:
  Dictionary info_;
};

/// Reads the property list (XML or binary) of a bundle folder: its Info.plist. Throws `NSError`.
Dictionary readBundleInfo(const URL& bundle);

}  // namespace ostra
