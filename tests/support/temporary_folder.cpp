#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ostra::test {

TemporaryFolder::TemporaryFolder() : TemporaryFolder(std::filesystem::temp_directory_path().string()) {}

TemporaryFolder::TemporaryFolder(const std::string& parent) : path_(parent + "/ostra-test-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary folder in " + parent);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

Bytes readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void writeFile(const std::string& path, ByteView bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void writeFile(const std::string& path, std::string_view text) {
  writeFile(path, ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

}  // namespace ostra::test
