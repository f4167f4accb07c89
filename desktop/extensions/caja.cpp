#include <libcaja-extension/caja-menu-provider.h>

#include "desktop/extensions/file_items.h"
#include "desktop/extensions/provider_object.h"

namespace {

struct Caja {
  using File = CajaFileInfo;
  using Item = CajaMenuItem;
  using Submenu = CajaMenu;
  static constexpr auto location = caja_file_info_get_location;
  static constexpr auto mimeType = caja_file_info_get_mime_type;
  static constexpr auto copyList = caja_file_info_list_copy;
  static constexpr auto freeList = caja_file_info_list_free;
  static constexpr auto newItem = caja_menu_item_new;
  static constexpr auto newSubmenu = caja_menu_new;
  static constexpr auto append = caja_menu_append_item;
  static constexpr auto setSubmenu = caja_menu_item_set_submenu;
};

GType type = 0;

GList* fileItems(CajaMenuProvider*, GtkWidget*, GList* files) noexcept {
  return ostra::menu::FileItems<Caja>::forSelection(files);
}

void fill(gpointer provider, gpointer) {
  static_cast<CajaMenuProviderIface*>(provider)->get_file_items = fileItems;
}

}  // namespace

extern "C" {

void caja_module_initialize(GTypeModule* module) {
  type = g_type_module_register_type(module, G_TYPE_OBJECT, "OstraCajaMenu", &ostra::menu::kProviderInfo,
                                     GTypeFlags{});
  const GInterfaceInfo info{fill, nullptr, nullptr};
  g_type_module_add_interface(module, type, CAJA_TYPE_MENU_PROVIDER, &info);
}

void caja_module_list_types(const GType** types, int* count) {
  *types = &type;
  *count = 1;
}

void caja_module_shutdown() {}
}
