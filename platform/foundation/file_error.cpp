#include "platform/foundation/file_error.h"

#include <cerrno>

#include <sys/stat.h>

namespace ostra {
namespace {

std::int64_t codeForReading(int errnoValue) {
  switch (errnoValue) {
    case ENOENT:
      return NSFileReadNoSuchFileError;
    case EPERM:
    case EACCES:
      return NSFileReadNoPermissionError;
    case ENAMETOOLONG:
      return NSFileReadInvalidFileNameError;
    case EFBIG:
      return NSFileReadTooLargeError;
    default:
      return NSFileReadUnknownError;
  }
}

std::int64_t codeForWriting(int errnoValue) {
  switch (errnoValue) {
    case ENOENT:
      return NSFileNoSuchFileError;
    case EPERM:
    case EACCES:
      return NSFileWriteNoPermissionError;
    case ENAMETOOLONG:
      return NSFileWriteInvalidFileNameError;
    case EEXIST:
      return NSFileWriteFileExistsError;
    case ENOSPC:
    case EDQUOT:
      return NSFileWriteOutOfSpaceError;
    case EROFS:
      return NSFileWriteVolumeReadOnlyError;
    default:
      return NSFileWriteUnknownError;
  }
}

bool onSameVolume(const std::string& a, const std::string& b) {
  struct stat first = {};
  struct stat second = {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev;
}

/// The name of the folder at which the volume of `path` is mounted: what file managers show for it.
std::string volumeName(const std::string& path) {
  URL folder = URL::fileURLWithPath(path).deletingLastPathComponent();
  if (!onSameVolume(folder.path(), folder.path())) return {};
  while (folder.path() != "/") {
    const URL parent = folder.deletingLastPathComponent();
    if (!onSameVolume(folder.path(), parent.path())) return folder.lastPathComponent();
    folder = parent;
  }
  return {};
}

}  // namespace

NSError fileError(int errnoValue, FileAccess access, std::string_view path) {
  NSError::UserInfo info;
  info.emplace(NSFilePathErrorKey, std::string(path));
  info.emplace(NSUnderlyingErrorKey, std::make_shared<const NSError>(NSPOSIXErrorDomain, errnoValue));
  const std::int64_t code =
      access == FileAccess::read ? codeForReading(errnoValue) : codeForWriting(errnoValue);
  if (code == NSFileWriteOutOfSpaceError || code == NSFileWriteVolumeReadOnlyError) {
    if (std::string name = volumeName(std::string(path)); !name.empty()) {
      info.emplace(VolumeNameErrorKey, std::move(name));
    }
  }
  return NSError(NSCocoaErrorDomain, code, std::move(info));
}

NSError changedFileError(const URL& url) {
  NSError::UserInfo info;
  info.emplace(NSFilePathErrorKey, url.path());
  info.emplace(NSLocalizedDescriptionKey,
               "The file “" + url.lastPathComponent() +
                   "” couldn’t be saved because it was changed by another program.");
  return NSError(NSCocoaErrorDomain, NSFileWriteUnknownError, std::move(info));
}

const std::string& filePath(const URL& url, FileAccess access) {
  if (url.isFileURL()) return url.path();
  throw NSError(NSCocoaErrorDomain, access == FileAccess::read ? NSFileReadUnsupportedSchemeError
                                                               : NSFileWriteUnsupportedSchemeError);
}

}  // namespace ostra
