#include "tests/faults/findings.h"

#include <cstdio>
#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace ostra::test {

void Findings::keep(const Mutation& mutation, const std::string& trouble) const {
  const std::string seed = std::to_string(plan_.seed), index = std::to_string(mutation.index);
  std::filesystem::create_directories(plan_.findings);
  const std::string path = plan_.findings + "/" + kind_ + "-" + seed + "-" + mutation.name;
  writeFile(path, mutation.bytes);
  std::string text = kind_ + ", mutation " + index + " of seed " + seed + ": " + trouble + "\n";
  text += "made of " + mutation.story + "\nagain: script/faults mutations 1 " + seed + " " + index + "\n";
  writeFile(path + ".txt", text);
  tell("mutation " + index + " of seed " + seed + ": " + trouble + " (" + path + ")");
}

void Findings::tell(const std::string& trouble) const {
  std::fprintf(stderr, "%s: %s\n", kind_.c_str(), trouble.c_str());
}

}  // namespace ostra::test
