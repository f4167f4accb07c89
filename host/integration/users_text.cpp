#include "host/integration/users_text.h"

#include "platform/foundation/user_languages.h"

namespace ostra {

std::string inUsersLanguage(const MenuText& text) {
  for (const Language& each : userLanguages()) {
    for (const std::string& code : {each.language + "_" + each.country, each.language}) {
      const auto found = text.translations.find(code);
      if (found != text.translations.end()) return found->second;
    }
    if (each.language == "en") break;
  }
  return text.plain;
}

}  // namespace ostra
