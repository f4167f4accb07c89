#include "desktop/extensions/menu.h"

#include "desktop/extensions/glib_memory.h"

namespace ostra::menu {
namespace {

constexpr const char* kMenu = "Menu";

std::string textIn(GKeyFile* file, const std::string& group, const char* key) {
  const Text text(g_key_file_get_string(file, group.c_str(), key, nullptr));
  return text ? text.get() : "";
}

std::string translatedIn(GKeyFile* file, const std::string& group, const char* key,
                         const std::string& otherwise) {
  const Text text(g_key_file_get_locale_string(file, group.c_str(), key, nullptr, nullptr));
  return text && *text != '\0' ? text.get() : otherwise;
}

std::vector<std::string> listIn(GKeyFile* file, const std::string& group, const char* key) {
  const Texts texts(g_key_file_get_string_list(file, group.c_str(), key, nullptr, nullptr));
  std::vector<std::string> list;
  for (char** each = texts.get(); each != nullptr && *each != nullptr; ++each) list.emplace_back(*each);
  return list;
}

/// File managers end themselves over an item without a tooltip, so every entry gets one.
Entry entryIn(GKeyFile* file, const std::string& action, const std::string& menuIcon) {
  const std::string group = "Entry " + action;
  Entry entry{.action = action, .bundle = textIn(file, group, "Bundle")};
  entry.title = translatedIn(file, group, "Name", action);
  entry.tooltip = translatedIn(file, group, "Tooltip", entry.title);
  entry.icon = translatedIn(file, group, "Icon", menuIcon);
  return entry;
}

KeyFile load(const std::string& path) {
  KeyFile file(g_key_file_new());
  GError* failure = nullptr;
  if (g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, &failure) == TRUE) return file;
  const Error error(failure);
  if (g_error_matches(failure, G_FILE_ERROR, G_FILE_ERROR_NOENT) == FALSE) {
    g_printerr("ostra: %s: %s\n", path.c_str(), failure->message);
  }
  return nullptr;
}

}  // namespace

std::optional<Menu> readMenu(const std::string& path) {
  const KeyFile file = load(path);
  if (!file) return std::nullopt;
  Menu menu{.title = translatedIn(file.get(), kMenu, "Name", ""),
            .icon = textIn(file.get(), kMenu, "Icon"),
            .program = textIn(file.get(), kMenu, "Program"),
            .types = ServedTypes(listIn(file.get(), kMenu, "MimeTypes")),
            .entries = {}};
  for (const std::string& action : listIn(file.get(), kMenu, "Entries")) {
    Entry entry = entryIn(file.get(), action, menu.icon);
    if (!entry.bundle.empty()) menu.entries.push_back(std::move(entry));
  }
  if (menu.title.empty() || menu.program.empty() || menu.entries.empty()) {
    g_printerr("ostra: %s: it describes no menu\n", path.c_str());
    return std::nullopt;
  }
  return menu;
}

std::string withoutMnemonic(std::string_view text) {
  std::string plain;
  for (const char character : text) plain.append(character == '_' ? 2 : 1, character);
  return plain;
}

}  // namespace ostra::menu
