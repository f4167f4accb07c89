#include <algorithm>

#include "host/integration/menu_files.h"
#include "host/integration/notation.h"

namespace ostra {
namespace {

/// "01" of the first; more digits where there are more entries than two hold.
std::string numberOf(std::size_t index, std::size_t count) {
  std::string number = std::to_string(index + 1);
  const std::size_t width = std::max<std::size_t>(2, std::to_string(count).size());
  return std::string(width - number.size(), '0') + number;
}

}  // namespace

std::vector<MenuFile> nemoActionFiles(const Menu& menu, const std::string& templates) {
  const TemplateValues values = menuValues(menu, kShellKeyFileNotation);
  std::vector<MenuFile> files;
  for (std::size_t i = 0; i < menu.entries.size(); ++i) {
    files.push_back(
        {"org.ostra." + numberOf(i, menu.entries.size()) + "-" + menu.entries[i].identifier + ".nemo_action",
         fillTemplateFile(templates, "nemo-action.in", values.entries[i])});
  }
  return files;
}

}  // namespace ostra
