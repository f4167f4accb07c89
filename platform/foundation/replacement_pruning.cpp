#include <cerrno>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/replacement_directory.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

constexpr time_t kWeek = time_t{7} * 24 * 60 * 60;

bool isDead(int process) { return kill(process, 0) != 0 && errno == ESRCH; }

/// Files too: what was on its way to a name beside it. Never what a link of such a name leads to.
bool isForgotten(const fs::path& entry) {
  const auto process = processOfPassingName(entry.filename().native());
  if (!process || !isDead(*process)) return false;
  struct stat status = {};
  if (lstat(entry.c_str(), &status) != 0 || status.st_uid != geteuid()) return false;
  if (!S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode)) return false;
  return time(nullptr) - status.st_mtim.tv_sec > kWeek;
}

}  // namespace

void pruneReplacementDirectories(const std::string& folder) {
  std::error_code ignored;
  std::vector<fs::path> forgotten;
  for (fs::directory_iterator entry(folder, ignored); entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (isForgotten(entry->path())) forgotten.push_back(entry->path());
  }
  for (const fs::path& entry : forgotten) fs::remove_all(entry, ignored);
}

}  // namespace ostra
