#include "platform/foundation/staged_write.h"

#include <cerrno>
#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/foundation/file_attributes.h"
#include "platform/foundation/file_calls.h"
#include "platform/foundation/file_error.h"
#include "platform/foundation/file_place.h"
#include "platform/foundation/file_replacement.h"
#include "platform/foundation/file_version.h"
#include "platform/foundation/replacement_directory.h"
#include "platform/foundation/service.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {
namespace {

NSError writeError(int errnoValue, const URL& url) {
  return fileError(errnoValue, FileAccess::write, url.path());
}

/// A replacement directory that goes, with what is left in it, at the end of the scope.
class StagingDirectory {
 public:
  explicit StagingDirectory(const URL& destination)
      : path_(makeReplacementDirectory(placeOf(destination.path()), destination.path())) {}
  StagingDirectory(const StagingDirectory&) = delete;
  StagingDirectory& operator=(const StagingDirectory&) = delete;
  ~StagingDirectory() {
    std::error_code ignored;
    if (!left_) std::filesystem::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }
  void leave() { left_ = true; }

 private:
  std::string path_;
  bool left_ = false;
};

/// Whether a file made in the directory may look like the one at `url`. Asked before the accessor runs:
/// afterwards there is no way back to a plain write.
bool canTakeOver(const StagingDirectory& directory, const URL& url) {
  const UniqueFd old(open(url.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  const std::string probe = FilePlace::joined(directory.path(), "probe");
  const UniqueFd fresh(open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!old || !fresh) return false;
  const bool can = keepAttributes(old.get(), fresh.get()) == 0;
  return Service<FileCalls>::current().remove({-1, probe}) == 0 && can;
}

/// The directory in which the new file can be made ready; null where that is impossible.
std::unique_ptr<StagingDirectory> stagingFor(const URL& destination) {
  try {
    auto directory = std::make_unique<StagingDirectory>(destination);
    return canTakeOver(*directory, destination) ? std::move(directory) : nullptr;
  } catch (const NSError&) {
    return nullptr;
  }
}

/// What a plain write would answer before it writes anything: 0 or an errno.
int permissionToWrite(const URL& url) {
  const UniqueFd file(open(url.path().c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  return file ? 0 : errno;
}

bool isFileAt(const FileVersion& file, const FilePlace& place) {
  const auto now = entryVersion(-1, place.path());
  return now && isSameFile(*now, file);
}

std::optional<NSError> putInPlace(StagingDirectory& directory, const URL& staged, const URL& destination) {
  const auto fresh = entryVersion(-1, staged.path());
  // Only a file that was never made means that its writer failed, and says so itself.
  if (!fresh && errno == ENOENT) return std::nullopt;
  if (!fresh) return writeError(errno, destination);
  const FilePlace place = placeOf(destination.path());
  try {
    replaceFile(destination, staged.path());
    return std::nullopt;
  } catch (const NSError& error) {
    // Neither done nor undone: then the directory holds the old picture.
    if (isFileAt(*fresh, place)) directory.leave();
    return error;
  }
}

std::optional<NSError> writeExistingItem(const URL& destination, bool isSource,
                                         const NSFileCoordinator::Accessor& accessor) {
  if (const int error = permissionToWrite(destination); error != 0) return writeError(error, destination);
  const auto directory = stagingFor(destination);
  if (directory == nullptr && isSource) return writeError(EACCES, destination);
  if (directory == nullptr) {
    accessor(destination);
    return std::nullopt;
  }
  const URL staged =
      URL::fileURLWithPath(directory->path()).appendingPathComponent(destination.lastPathComponent());
  accessor(staged);
  return putInPlace(*directory, staged, destination);
}

}  // namespace

std::optional<NSError> writeRelatedItem(const URL& destination, const URL& primary,
                                        const NSFileCoordinator::Accessor& accessor) {
  struct stat status = {};
  if (stat(destination.path().c_str(), &status) != 0) {
    if (errno != ENOENT) return writeError(errno, destination);
    // The source itself, which somebody removed meanwhile, is not brought back.
    if (destination.path() == primary.path()) return changedFileError(destination);
    accessor(destination);
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode)) return writeError(EISDIR, destination);
  if (!S_ISREG(status.st_mode)) return writeError(EINVAL, destination);

  const FileVersion found = fileVersionOf(status);
  struct stat source = {};
  const bool hasSource = stat(primary.path().c_str(), &source) == 0;
  // Not knowing whether this is the source is no leave to write over it.
  if (!hasSource && errno != ENOENT) return writeError(errno, destination);
  const bool isSource = hasSource && isSameFile(fileVersionOf(source), found);
  const FileVersion expected = isSource ? primary.fileVersion().value_or(found) : found;
  if (expected != found) return changedFileError(destination);
  return writeExistingItem(destination.withFileVersion(expected), isSource, accessor);
}

}  // namespace ostra
