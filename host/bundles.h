#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/value.h"

namespace ostra {

/// A Quick Action bundle: a folder with a property list.
struct Bundle {
  std::string folder;
  Dictionary info;

  /// The raw value of its conversion, and the title in menus; empty when the property list has none.
  std::string action() const;
  std::string displayName() const;
  /// The class of the object that serves its requests; empty when the property list has none.
  std::string principalClassName() const;
};

/// Throws `UsageError` when the folder has no property list that can be read.
Bundle readBundle(const std::string& folder);

/// The folder of the program's own bundles.
std::string bundlesFolder();
/// The bundles in a folder, by name. One that cannot be read is reported on standard error and left out.
std::vector<Bundle> bundlesIn(const std::string& folder);
/// The bundle in `folder` that performs this action. Throws `UsageError` when there is none.
Bundle bundleOfAction(const std::string& folder, std::string_view action);

/// What `ostra list` prints: a line per bundle, its action and its title.
std::string bundleList(const std::vector<Bundle>& bundles);

}  // namespace ostra
