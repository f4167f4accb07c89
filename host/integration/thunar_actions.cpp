#include "host/integration/menu_files.h"
#include "host/integration/notation.h"
#include "host/integration/users_text.h"

namespace ostra {

std::vector<std::string> thunarActions(const Menu& menu, const std::string& templates) {
  const TemplateValues values = menuValues(menu, kShellXmlNotation);
  std::vector<std::string> actions;
  for (TemplateValues entry : values.entries) {
    entry.texts["MENU_TITLE"] = {kShellXmlNotation.text(inUsersLanguage(menu.name)), {}};
    actions.push_back(fillTemplateFile(templates, "thunar-action.in", entry));
  }
  return actions;
}

}  // namespace ostra
