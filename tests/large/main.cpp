#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>

#include "tests/large/runs.h"

namespace {

using namespace ostra::test;

int explain() {
  std::fputs(
      "usage: large_runs files FOLDER COUNT SEED\n"
      "       large_runs picture FOLDER NAME SEED [DIVISOR]\n"
      "       large_runs names\n",
      stderr);
  return 2;
}

unsigned number(const std::string& word) {
  return static_cast<unsigned>(std::strtoul(word.c_str(), nullptr, 10));
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() == 1 && words[0] == "names") {
    for (const std::string& name : largePictureNames()) std::puts(name.c_str());
    return 0;
  }
  if (words.size() < 4 || words.size() > 5) return explain();
  const unsigned divisor = words.size() == 5 ? number(words[4]) : 1;
  try {
    if (words[0] == "files" && number(words[2]) >= 10)
      return runManyFiles(words[1], number(words[2]), number(words[3])) ? 0 : 1;
    if (words[0] == "picture" && divisor > 0)
      return runLargePicture(words[1], words[2], number(words[3]), divisor) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", words[2].c_str(), error.what());
    return 1;
  }
  return explain();
}
