#include "desktop/extensions/served_types.h"

#include <algorithm>
#include <string_view>

#include <gio/gio.h>

namespace ostra::menu {

bool ServedTypes::contain(const char* type) const {
  if (type == nullptr) return false;
  const auto known = answers_.find(std::string_view(type));
  if (known != answers_.end()) return known->second;
  return answers_[type] = findAmongAll(type);
}

bool ServedTypes::findAmongAll(const char* type) const {
  return std::any_of(types_.begin(), types_.end(), [type](const std::string& served) {
    return g_content_type_equals(type, served.c_str()) == TRUE;
  });
}

}  // namespace ostra::menu
