#include "host/integration/menu_files.h"
#include "host/integration/notation.h"

namespace ostra {

MenuFile serviceMenuFile(const Menu& menu, const std::string& templates) {
  // A copy in a user's home runs nothing unless it is executable.
  return {"org.ostra.Ostra.desktop",
          fillTemplateFile(templates, "service-menu.in", menuValues(menu, kDesktopEntryNotation)), true};
}

}  // namespace ostra
