#include "platform/foundation/file_replacement.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/foundation/file_attributes.h"
#include "platform/foundation/file_calls.h"
#include "platform/foundation/file_error.h"
#include "platform/foundation/file_place.h"
#include "platform/foundation/file_swap.h"
#include "platform/foundation/file_version.h"
#include "platform/foundation/folder.h"
#include "platform/foundation/service.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {
namespace {

NSError writeError(int errnoValue, const URL& original) {
  return fileError(errnoValue, FileAccess::write, original.path());
}

/// An open regular file and its version. Throws where there is none; missing is no failure, but not open.
struct OpenFile {
  UniqueFd file;
  FileVersion version;
};

std::optional<OpenFile> openRegularFile(const Entry& entry, const URL& original) {
  // A pipe of that name must not keep us waiting.
  UniqueFd file(
      openat(entry.folder, entry.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file && errno == ENOENT) return std::nullopt;
  if (!file) throw writeError(errno, original);
  struct stat status = {};
  if (fstat(file.get(), &status) != 0) throw writeError(errno, original);
  if (S_ISDIR(status.st_mode)) throw writeError(EISDIR, original);
  if (!S_ISREG(status.st_mode)) throw writeError(EINVAL, original);
  return OpenFile{std::move(file), fileVersionOf(status)};
}

/// Seen before it is copied: what somebody changes in between is then either copied or noticed.
SeenFile keepLooks(const OpenFile& old, const OpenFile& fresh, const URL& original) {
  const auto attributes = fileAttributes(old.file.get());
  if (!attributes) throw writeError(errno, original);
  const int error = keepAttributes(old.file.get(), fresh.file.get());
  if (error != 0) throw writeError(error, original);
  return {old.version, *attributes, old.file.get()};
}

void makeDurable(const OpenFile& fresh, const URL& original) {
  const int error = Service<FileCalls>::current().sync(fresh.file.get());
  if (error != 0) throw writeError(error, original);
}

}  // namespace

void replaceFile(const URL& original, const std::string& newItem) {
  const FilePlace place = placeOf(filePath(original, FileAccess::write));
  const Folder folder(place.folder);
  if (!folder) throw writeError(errno, original);
  const Entry name = {folder.get(), place.name};
  const Entry newName = {-1, newItem};

  const auto fresh = openRegularFile(newName, original);
  if (!fresh) throw fileError(ENOENT, FileAccess::write, newItem);
  const auto old = openRegularFile(name, original);
  const auto& expected = original.fileVersion();
  if (expected && (!old || old->version != *expected)) throw changedFileError(original);

  const auto seen = old ? std::optional(keepLooks(*old, *fresh, original)) : std::nullopt;
  makeDurable(*fresh, original);
  const FileSwap swap(folder, newName, name, fresh->file.get());
  const SwapResult result = seen ? swap.takePlaceOf(*seen) : swap.moveToNewName();
  if (result.changed) throw changedFileError(original);
  if (result.error != 0) throw writeError(result.error, original);
}

}  // namespace ostra
