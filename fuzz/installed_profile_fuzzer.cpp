// Files of any content in a profile folder: the enumeration reads header and description of each and no more.
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

#include "platform/colorsync/profile_facts.h"
#include "platform/foundation/unicode.h"

namespace {

/// One file in memory for all inputs.
int fileOf(const std::uint8_t* data, std::size_t size) {
  static const int file = memfd_create("profile", 0);
  if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
  return file;
}

/// A name is never empty, one line, and well-formed.
bool isName(const std::string& text) {
  const std::u32string characters = ostra::charactersOf(text);
  std::string again;
  for (const char32_t character : characters) {
    if (character < 0x20 || character == 0x7F) return false;
    ostra::appendCharacter(again, character);
  }
  return !text.empty() && again == text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool german = setenv("LC_ALL", "de_DE.UTF-8", 1) == 0;
  const auto facts = ostra::profileFacts(fileOf(data, size));
  if (!facts) return 0;
  if (!german || !isName(facts->description)) std::abort();
  if (facts->colorSpace.size() != 4 || facts->profileClass.size() != 4) std::abort();
  return 0;
}
