#include <gio/gio.h>

// Declares its entry points, and not that they are of C.
extern "C" {
#include <nautilus-extension.h>
}

#include "desktop/extensions/file_items.h"
#include "desktop/extensions/provider_object.h"

namespace {

struct Nautilus {
  using File = NautilusFileInfo;
  using Item = NautilusMenuItem;
  using Submenu = NautilusMenu;
  static constexpr auto location = nautilus_file_info_get_location;
  static constexpr auto mimeType = nautilus_file_info_get_mime_type;
  static constexpr auto copyList = nautilus_file_info_list_copy;
  static constexpr auto freeList = nautilus_file_info_list_free;
  static constexpr auto newItem = nautilus_menu_item_new;
  static constexpr auto newSubmenu = nautilus_menu_new;
  static constexpr auto append = nautilus_menu_append_item;
  static constexpr auto setSubmenu = nautilus_menu_item_set_submenu;
};

GType type = 0;

GList* fileItems(NautilusMenuProvider*, GList* files) noexcept {
  return ostra::menu::FileItems<Nautilus>::forSelection(files);
}

void fill(gpointer provider, gpointer) {
  static_cast<NautilusMenuProviderInterface*>(provider)->get_file_items = fileItems;
}

}  // namespace

extern "C" {

void nautilus_module_initialize(GTypeModule* module) {
  type = g_type_module_register_type(module, G_TYPE_OBJECT, "OstraNautilusMenu", &ostra::menu::kProviderInfo,
                                     GTypeFlags{});
  const GInterfaceInfo info{fill, nullptr, nullptr};
  g_type_module_add_interface(module, type, NAUTILUS_TYPE_MENU_PROVIDER, &info);
}

void nautilus_module_list_types(const GType** types, int* count) {
  *types = &type;
  *count = 1;
}

void nautilus_module_shutdown() {}
}
