#include "host/bundles.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "host/data_folder.h"
#include "host/message.h"
#include "host/usage_error.h"
#include "platform/foundation/bundle.h"
#include "platform/foundation/characters.h"
#include "platform/foundation/error.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

std::string textAt(const Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  const auto* text = found == dictionary.end() ? nullptr : found->second.get<std::string>();
  return text == nullptr ? "" : *text;
}

std::vector<std::string> foldersIn(const std::string& folder) {
  std::error_code ignored;
  std::vector<std::string> folders;
  for (fs::directory_iterator entry(folder, ignored); entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (entry->is_directory(ignored)) folders.push_back(entry->path().string());
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

/// Nothing for one that cannot be read, which is told.
std::optional<Bundle> readIfSound(const std::string& folder) {
  try {
    return readBundle(folder);
  } catch (const UsageError& failure) {
    say(failure.what());
    return std::nullopt;
  }
}

}  // namespace

std::string Bundle::action() const {
  return std::string(trimWhitespaceAndNewlines(textAt(info, "NIVEQuickAction")));
}

std::string Bundle::displayName() const { return textAt(info, "CFBundleDisplayName"); }

std::string Bundle::principalClassName() const {
  const auto found = info.find("NSExtension");
  const auto* extension = found == info.end() ? nullptr : found->second.get<Dictionary>();
  return extension == nullptr ? "" : textAt(*extension, "NSExtensionPrincipalClass");
}

Bundle readBundle(const std::string& folder) {
  try {
    return {folder, readBundleInfo(URL::fileURLWithPath(folder))};
  } catch (const NSError& failure) {
    throw UsageError("The bundle “" + folder + "” cannot be used. " + failure.localizedDescription());
  }
}

std::string bundlesFolder() { return dataFolder("bundles"); }

std::vector<Bundle> bundlesIn(const std::string& folder) {
  std::vector<Bundle> bundles;
  for (const std::string& each : foldersIn(folder)) {
    if (auto bundle = readIfSound(each)) bundles.push_back(std::move(*bundle));
  }
  return bundles;
}

Bundle bundleOfAction(const std::string& folder, std::string_view action) {
  std::vector<std::string> folders = foldersIn(folder);
  // Ours are called what their action is, so that a start reads no other.
  std::stable_partition(folders.begin(), folders.end(),
                        [&](const std::string& each) { return fs::path(each).filename() == action; });
  for (const std::string& each : folders) {
    if (auto bundle = readIfSound(each); bundle && bundle->action() == action) return std::move(*bundle);
  }
  throw UsageError("There is no action “" + std::string(action) + "”. See “ostra list”.");
}

std::string bundleList(const std::vector<Bundle>& bundles) {
  std::size_t width = 0;
  for (const Bundle& bundle : bundles) width = std::max(width, bundle.action().size());
  std::string list;
  for (const Bundle& bundle : bundles) {
    const std::string action = bundle.action();
    if (action.empty()) continue;
    list += action + std::string(width - action.size() + 2, ' ') + bundle.displayName() + "\n";
  }
  return list;
}

}  // namespace ostra
