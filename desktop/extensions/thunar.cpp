#include <gtk/gtk.h>

// Declares some of its functions, and not that they are of C.
extern "C" {
#include <thunarx/thunarx.h>
}

#include "desktop/extensions/file_items.h"
#include "desktop/extensions/provider_object.h"

namespace {

struct Thunar {
  using File = ThunarxFileInfo;
  using Item = ThunarxMenuItem;
  using Submenu = ThunarxMenu;
  static constexpr auto location = thunarx_file_info_get_location;
  static constexpr auto mimeType = thunarx_file_info_get_mime_type;
  static constexpr auto copyList = thunarx_file_info_list_copy;
  static constexpr auto freeList = thunarx_file_info_list_free;
  static constexpr auto newItem = thunarx_menu_item_new;
  static constexpr auto newSubmenu = thunarx_menu_new;
  static constexpr auto append = thunarx_menu_append_item;
  static constexpr auto setSubmenu = thunarx_menu_item_set_menu;
};

GType type = 0;

GList* fileItems(ThunarxMenuProvider*, GtkWidget*, GList* files) noexcept {
  return ostra::menu::FileItems<Thunar>::forSelection(files);
}

void fill(gpointer provider, gpointer) {
  static_cast<ThunarxMenuProviderIface*>(provider)->get_file_menu_items = fileItems;
}

}  // namespace

extern "C" {

void thunar_extension_initialize(ThunarxProviderPlugin* plugin) {
  // Types cannot be taken back, and an unloaded extension would leave them without their code.
  thunarx_provider_plugin_set_resident(plugin, TRUE);
  type = thunarx_provider_plugin_register_type(plugin, G_TYPE_OBJECT, "OstraThunarMenu",
                                               &ostra::menu::kProviderInfo, GTypeFlags{});
  const GInterfaceInfo info{fill, nullptr, nullptr};
  thunarx_provider_plugin_add_interface(plugin, type, THUNARX_TYPE_MENU_PROVIDER, &info);
}

void thunar_extension_list_types(const GType** types, int* count) {
  *types = &type;
  *count = 1;
}

void thunar_extension_shutdown() {}
}
