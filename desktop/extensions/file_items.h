#pragma once
#include <memory>
#include <string>

#include <gio/gio.h>

#include "desktop/extensions/conversion_start.h"
#include "desktop/extensions/glib_memory.h"
#include "desktop/extensions/menu_file.h"

namespace ostra::menu {

/// The items of a selection's menu. A file manager is the names that it has for the same few calls: see the
/// files that are called after one.
template <class FileManager>
class FileItems {
  using File = typename FileManager::File;
  using Item = typename FileManager::Item;
  using Submenu = typename FileManager::Submenu;

 public:
  /// A list with the submenu, for the caller to keep; null where the selection is not ours.
  static GList* forSelection(GList* files, MenuFile& file = MenuFile::installed()) {
    const std::shared_ptr<const Menu> menu = file.current();
    if (!menu || !areServed(*menu, files)) return nullptr;
    Item* top = newItem("Ostra::Menu", menu->title, menu->title, menu->icon);
    const Object<Submenu> submenu(FileManager::newSubmenu());
    const Selection selection(FileManager::copyList(files), FileManager::freeList);
    for (const Entry& entry : menu->entries) {
      const Object<Item> item(newItem("Ostra::" + entry.action, entry.title, entry.tooltip, entry.icon));
      // Lives as long as the item may be picked.
      auto* choice = new Choice{menu, &entry, selection};
      g_signal_connect_data(item.get(), "activate", G_CALLBACK(picked), choice, forget, GConnectFlags{});
      FileManager::append(submenu.get(), item.get());
    }
    FileManager::setSubmenu(top, submenu.get());
    return g_list_prepend(nullptr, top);
  }

 private:
  using Selection = std::shared_ptr<GList>;
  struct Choice {
    std::shared_ptr<const Menu> menu;
    const Entry* entry;
    Selection files;
  };

  static Text pathOf(gpointer file) {
    const Object<GFile> location(FileManager::location(static_cast<File*>(file)));
    return Text(location ? g_file_get_path(location.get()) : nullptr);
  }

  static bool isServed(const Menu& menu, gpointer file) {
    const Text type(FileManager::mimeType(static_cast<File*>(file)));
    return menu.types.contain(type.get()) && pathOf(file) != nullptr;
  }

  static bool areServed(const Menu& menu, GList* files) {
    if (files == nullptr) return false;
    for (const GList* each = files; each != nullptr; each = each->next) {
      if (!isServed(menu, each->data)) return false;
    }
    return true;
  }

  static Item* newItem(const std::string& name, const std::string& title, const std::string& tooltip,
                       const std::string& icon) {
    return FileManager::newItem(name.c_str(), withoutMnemonic(title).c_str(), tooltip.c_str(), icon.c_str());
  }

  static void picked(Item*, gpointer data) noexcept {
    const auto* choice = static_cast<const Choice*>(data);
    std::string paths;
    for (const GList* each = choice->files.get(); each != nullptr; each = each->next) {
      if (const Text path = pathOf(each->data)) paths.append(path.get()).push_back('\0');
    }
    startConversion(*choice->menu, *choice->entry, paths);
  }

  static void forget(gpointer data, GClosure*) { delete static_cast<Choice*>(data); }
};

}  // namespace ostra::menu
