#include "host/integration/menu_files.h"
#include "host/integration/notation.h"

namespace ostra {

MenuFile extensionMenuFile(const Menu& menu, const std::string& templates) {
  return {"menu.ini",
          fillTemplateFile(templates, "extension-menu.in", menuValues(menu, kDesktopEntryNotation))};
}

}  // namespace ostra
