#include "host/integration/menu.h"

#include <algorithm>
#include <filesystem>

#include "host/bundles.h"
#include "host/integration/localized_info.h"
#include "host/usage_error.h"
#include "platform/imageio/codec.h"
#include "platform/types/ut_type.h"

namespace ostra {
namespace {

constexpr std::string_view kNameKey = "CFBundleDisplayName";
constexpr std::string_view kTooltipKey = "OstraMenuTooltip";
constexpr std::string_view kIconKey = "OstraMenuIcon";

bool standsInIdentifiers(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '-';
}

// Names of groups, of actions and of files are made of it, and the narrowest of them decides.
std::string identifierOf(const std::string& folderName) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string identifier;
  for (const char character : folderName) {
    const auto byte = static_cast<unsigned char>(character);
    if (standsInIdentifiers(character)) {
      identifier += character;
    } else {
      identifier += {'-', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return identifier;
}

MenuEntry entryOf(const Bundle& bundle, const MenuSources& sources, const std::string& menuIcon) {
  const std::string folderName = std::filesystem::path(bundle.folder).filename().string();
  const LocalizedInfo info(bundle.folder, bundle.info);
  MenuEntry entry;
  entry.identifier = identifierOf(folderName);
  entry.name = info.textAt(kNameKey);
  if (entry.name.plain.empty()) entry.name.plain = folderName;
  entry.tooltip = info.textAt(kTooltipKey);
  // Some file managers fall over an entry without one.
  if (entry.tooltip.plain.empty()) entry.tooltip = entry.name;
  entry.icon = info.textAt(kIconKey).plain;
  if (entry.icon.empty()) entry.icon = menuIcon;
  entry.bundle = sources.namedBundles + "/" + folderName;
  return entry;
}

void addNew(std::vector<std::string>& words, const std::vector<std::string>& more) {
  for (const std::string& each : more) {
    if (std::find(words.begin(), words.end(), each) == words.end()) words.push_back(each);
  }
}

}  // namespace

Menu readMenu(const MenuSources& sources) {
  const Bundle own = readBundle(sources.templates);
  const LocalizedInfo info(own.folder, own.info);
  Menu menu;
  menu.name = info.textAt(kNameKey);
  menu.icon = info.textAt(kIconKey).plain;
  for (const Codec& codec : allCodecs()) {
    const auto type = UTType::withIdentifier(codec.type);
    if (!type) continue;
    addNew(menu.mimeTypes, type->mimeTypes());
    addNew(menu.extensions, type->filenameExtensions());
  }
  menu.program = sources.program;
  for (const Bundle& bundle : bundlesIn(sources.bundles)) {
    if (!bundle.action().empty()) menu.entries.push_back(entryOf(bundle, sources, menu.icon));
  }
  if (menu.entries.empty()) throw UsageError("There are no actions in “" + sources.bundles + "”.");
  return menu;
}

}  // namespace ostra
