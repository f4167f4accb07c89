#pragma once
#include <cstdlib>

namespace ostra::test {

/// The user's language, for a scope.
class Language {
 public:
  explicit Language(const char* name) { setenv("LANGUAGE", name, 1); }
  ~Language() { unsetenv("LANGUAGE"); }
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;
};

}  // namespace ostra::test
