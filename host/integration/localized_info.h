#pragma once
#include <map>
#include <string>
#include <string_view>

#include "host/integration/menu.h"
#include "platform/foundation/value.h"

namespace ostra {

/// The property list of a bundle together with its translations: `InfoPlist.strings` (a property list too) in
/// the bundle's folders `LANGUAGE.lproj`.
class LocalizedInfo {
 public:
  /// A translation that cannot be read is reported on standard error and left out.
  LocalizedInfo(const std::string& folder, Dictionary info);

  /// Line feeds and other control characters become blanks: a title is one line. Empty where `key` has no
  /// text.
  MenuText textAt(std::string_view key) const;

 private:
  Dictionary plain_;
  std::map<std::string, Dictionary> translations_;
};

}  // namespace ostra
