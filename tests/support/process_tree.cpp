#include "tests/support/process_tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <sys/stat.h>

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

std::string folderOf(pid_t process) { return "/proc/" + std::to_string(process); }

/// The numbers in front of "kB" of such a file, by their names.
std::map<std::string, std::size_t> bytesIn(const std::string& path) {
  std::map<std::string, std::size_t> values;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || !line.ends_with(" kB")) continue;
    values[line.substr(0, colon)] = std::strtoul(line.c_str() + colon + 1, nullptr, 10) * 1024;
  }
  return values;
}

std::size_t entriesIn(const std::string& folder) {
  std::error_code gone;
  const fs::directory_iterator entries(folder, gone);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t linesIn(const std::string& path) {
  std::ifstream file(path);
  return static_cast<std::size_t>(
      std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n'));
}

bool isZombie(pid_t process) {
  std::ifstream file(folderOf(process) + "/stat");
  std::string line;
  std::getline(file, line);
  const std::size_t name = line.rfind(") ");
  return name != std::string::npos && line[name + 2] == 'Z';
}

std::vector<pid_t> treeOf(pid_t root) {
  std::vector<pid_t> all = {root};
  for (std::size_t i = 0; i < all.size(); ++i) {
    std::error_code gone;
    for (const auto& task : fs::directory_iterator(folderOf(all[i]) + "/task", gone)) {
      std::ifstream children(task.path() / "children");
      for (pid_t child = 0; children >> child;) all.push_back(child);
    }
  }
  return all;
}

/// Memory files by their number: what they hold, or as much of them as is mapped where nobody has them open.
using MemoryFiles = std::map<unsigned long, std::size_t>;

void addOpenFiles(pid_t process, MemoryFiles& files) {
  std::error_code gone;
  for (const auto& entry : fs::directory_iterator(folderOf(process) + "/fd", gone)) {
    struct stat status {};
    const std::string target = fs::read_symlink(entry.path(), gone);
    if (!target.starts_with("/memfd:") || stat(entry.path().c_str(), &status) != 0) continue;
    files[status.st_ino] = static_cast<std::size_t>(status.st_blocks) * 512;
  }
}

void addMappedFiles(pid_t process, MemoryFiles& files) {
  std::ifstream maps(folderOf(process) + "/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("/memfd:") == std::string::npos) continue;
    std::istringstream words(line);
    unsigned long from = 0, to = 0, number = 0;
    char dash = 0;
    std::string rights, offset, device;
    words >> std::hex >> from >> dash >> to >> rights >> offset >> device >> std::dec >> number;
    files.emplace(number, to - from);
  }
}

}  // namespace

ProcessTree::ProcessTree(pid_t root) {
  const std::string folder = folderOf(root);
  const auto status = bytesIn(folder + "/status");
  const auto valueOf = [&](const char* name) {
    const auto found = status.find(name);
    return found == status.end() ? 0 : found->second;
  };
  residentBytes = valueOf("VmRSS");
  mostResidentBytes = valueOf("VmHWM");
  descriptors = entriesIn(folder + "/fd");
  threads = entriesIn(folder + "/task");
  mappings = linesIn(folder + "/maps");
  const std::vector<pid_t> all = treeOf(root);
  processes = all.size();
  zombies = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), isZombie));
}

std::size_t memoryOfTree(pid_t root) {
  std::size_t bytes = 0;
  MemoryFiles files;
  const std::vector<pid_t> all = treeOf(root);
  for (const pid_t process : all) {
    const auto shares = bytesIn(folderOf(process) + "/smaps_rollup");
    for (const char* share : {"Pss_Anon", "Pss_File"}) {
      const auto found = shares.find(share);
      if (found != shares.end()) bytes += found->second;
    }
    addOpenFiles(process, files);
  }
  for (const pid_t process : all) addMappedFiles(process, files);
  for (const auto& [number, held] : files) bytes += held;
  return bytes;
}

}  // namespace ostra::test
