#include "host/housekeeping.h"

#include <ctime>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>

#include "host/picture_file.h"
#include "platform/foundation/replacement_directory.h"
#include "platform/foundation/unique_fd.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

constexpr time_t kDay = time_t{24} * 60 * 60;

/// Whether a day has passed since the last clean-up; if so, this is the new one. The time is that of an empty
/// file.
bool takeTodaysTurn(const std::string& folder) {
  const std::string stamp = folder + "/cleaned-up";
  struct stat status {};
  const time_t now = time(nullptr);
  // A stamp from the future is a clock that was wrong, not a reason to wait for it.
  if (stat(stamp.c_str(), &status) == 0 && status.st_mtim.tv_sec <= now &&
      now - status.st_mtim.tv_sec < kDay) {
    return false;
  }
  if (!makeFolders(folder)) return false;
  const UniqueFd file(open(stamp.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  return file && futimens(file.get(), nullptr) == 0;
}

}  // namespace

void cleanUpAfterFormerRuns(const std::vector<std::string>& pictures) {
  const auto cache = cacheFolder();
  if (!cache || !takeTodaysTurn(*cache)) return;
  std::set<std::string> folders;
  if (const auto place = replacementCacheFolder()) folders.insert(*place);
  for (const std::string& picture : pictures) {
    folders.insert(URL::fileURLWithPath(absolutePath(picture)).deletingLastPathComponent().path());
  }
  for (const std::string& folder : folders) pruneReplacementDirectories(folder);
}

}  // namespace ostra
