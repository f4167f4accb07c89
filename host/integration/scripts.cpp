#include <algorithm>
#include <set>

#include "host/integration/menu_files.h"
#include "host/integration/notation.h"
#include "host/integration/users_text.h"

namespace ostra {
namespace {

std::string fileNameOf(const MenuText& text) {
  std::string name = inUsersLanguage(text);
  std::replace(name.begin(), name.end(), '/', '-');
  return name;
}

}  // namespace

std::vector<MenuFile> scriptFiles(const Menu& menu, const std::string& templates) {
  const TemplateValues values = menuValues(menu, kShellNotation);
  const std::string folder = fileNameOf(menu.name) + "/";
  std::set<std::string> taken;
  std::vector<MenuFile> files;
  for (std::size_t i = 0; i < menu.entries.size(); ++i) {
    const MenuEntry& entry = menu.entries[i];
    std::string name = fileNameOf(entry.name);
    if (!taken.insert(name).second) name.append(" (").append(entry.identifier).append(")");
    files.push_back({folder + name, fillTemplateFile(templates, "script.in", values.entries[i]), true});
  }
  return files;
}

}  // namespace ostra
