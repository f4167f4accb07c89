#include <libnemo-extension/nemo-menu-provider.h>

#include "desktop/extensions/file_items.h"
#include "desktop/extensions/provider_object.h"

namespace {

struct Nemo {
  using File = NemoFileInfo;
  using Item = NemoMenuItem;
  using Submenu = NemoMenu;
  static constexpr auto location = nemo_file_info_get_location;
  static constexpr auto mimeType = nemo_file_info_get_mime_type;
  static constexpr auto copyList = nemo_file_info_list_copy;
  static constexpr auto freeList = nemo_file_info_list_free;
  static constexpr auto newItem = nemo_menu_item_new;
  static constexpr auto newSubmenu = nemo_menu_new;
  static constexpr auto append = nemo_menu_append_item;
  static constexpr auto setSubmenu = nemo_menu_item_set_submenu;
};

GType type = 0;

GList* fileItems(NemoMenuProvider*, GtkWidget*, GList* files) noexcept {
  return ostra::menu::FileItems<Nemo>::forSelection(files);
}

void fill(gpointer provider, gpointer) {
  static_cast<NemoMenuProviderInterface*>(provider)->get_file_items = fileItems;
}

}  // namespace

extern "C" {

void nemo_module_initialize(GTypeModule* module) {
  type = g_type_module_register_type(module, G_TYPE_OBJECT, "OstraNemoMenu", &ostra::menu::kProviderInfo,
                                     GTypeFlags{});
  const GInterfaceInfo info{fill, nullptr, nullptr};
  g_type_module_add_interface(module, type, NEMO_TYPE_MENU_PROVIDER, &info);
}

void nemo_module_list_types(const GType** types, int* count) {
  *types = &type;
  *count = 1;
}

void nemo_module_shutdown() {}
}
