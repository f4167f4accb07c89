#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace ostra {

/// A language with, perhaps, a country, such as "de" and "AT"; the country is empty where it is open.
struct Language {
  std::string language;
  std::string country;
  bool operator==(const Language&) const = default;
};

/// The languages that the user reads, best first, as the environment names them (LANGUAGE, LC_ALL,
/// LC_MESSAGES, LANG). Empty where it names none.
std::vector<Language> userLanguages();

/// The name of the locale that the environment sets for a category such as "LC_COLLATE"; may be empty.
std::string localeNameFor(const char* category);
/// Whether a locale is of no language: C, POSIX, C.UTF-8, or none.
bool isPlainLocale(std::string_view name);

}  // namespace ostra
