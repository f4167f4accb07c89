#include "platform/foundation/user_languages.h"

#include <cstdlib>
#include <sstream>

namespace ostra {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// Of a locale's name, such as "de_AT.UTF-8@euro".
Language languageOf(std::string_view locale) {
  const std::string_view bare = locale.substr(0, locale.find_first_of(".@"));
  const std::size_t line = bare.find_first_of("_-");
  if (line == std::string_view::npos) return {std::string(bare), ""};
  return {std::string(bare.substr(0, line)), std::string(bare.substr(line + 1))};
}

}  // namespace

std::string localeNameFor(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    if (std::string name = environment(variable); !name.empty()) return name;
  }
  return "";
}

bool isPlainLocale(std::string_view name) {
  return name.empty() || name == "C" || name == "POSIX" || name.starts_with("C.");
}

std::vector<Language> userLanguages() {
  const std::string locale = localeNameFor("LC_MESSAGES");
  if (isPlainLocale(locale)) return {};  // LANGUAGE refines a language and does not replace none
  std::vector<Language> languages;
  std::istringstream list(environment("LANGUAGE"));
  for (std::string each; std::getline(list, each, ':');) {
    if (!each.empty()) languages.push_back(languageOf(each));
  }
  languages.push_back(languageOf(locale));
  return languages;
}

}  // namespace ostra
