#include "host/integration/menu_files.h"
#include "host/integration/notation.h"

namespace ostra {

// Identifiers of actions and of applications share one space of names, so no action is called as the program
// is.
std::vector<MenuFile> fileManagerActionFiles(const Menu& menu, const std::string& templates) {
  TemplateValues values = menuValues(menu, kDesktopEntryNotation);
  std::vector<MenuFile> files;
  std::string items;
  for (std::size_t i = 0; i < menu.entries.size(); ++i) {
    const std::string identifier = "org.ostra.action." + menu.entries[i].identifier;
    items += identifier + ";";
    files.push_back(
        {identifier + ".desktop", fillTemplateFile(templates, "file-manager-action.in", values.entries[i])});
  }
  values.texts["ITEMS"] = {items, {}};
  files.push_back({"org.ostra.menu.desktop", fillTemplateFile(templates, "file-manager-menu.in", values)});
  return files;
}

}  // namespace ostra
