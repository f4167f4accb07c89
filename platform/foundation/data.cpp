#include "platform/foundation/data.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/foundation/file_attributes.h"
#include "platform/foundation/file_calls.h"
#include "platform/foundation/file_error.h"
#include "platform/foundation/file_place.h"
#include "platform/foundation/file_version.h"
#include "platform/foundation/folder.h"
#include "platform/foundation/replacement_directory.h"
#include "platform/foundation/service.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {
namespace {

FileCalls& calls() { return Service<FileCalls>::current(); }

int writeAll(int file, ByteView data) {
  while (!data.empty()) {
    std::size_t written = 0;
    if (const int error = calls().write(file, data, written); error != 0) return error;
    data = data.subspan(written);
  }
  return 0;
}

int reserve(int file, std::size_t size) {
  if (size == 0) return 0;
  const int error = calls().reserve(file, static_cast<std::int64_t>(size));
  return error == EOPNOTSUPP || error == EINVAL || error == ENOSYS ? 0 : error;
}

/// Everything up to the disk. The length is set last, so that no room for the new means that the old is
/// intact.
int fill(int file, ByteView data) {
  if (const int error = reserve(file, data.size()); error != 0) return error;
  if (const int error = writeAll(file, data); error != 0) return error;
  const auto size = static_cast<std::int64_t>(data.size());
  const auto before = openFileVersion(file);
  if (!before) return EIO;
  if (before->size > size) {
    if (const int error = calls().setLength(file, size); error != 0) return error;
  }
  const auto after = openFileVersion(file);
  if (!after || after->size != size) return EIO;
  return calls().sync(file);
}

int closed(UniqueFd& file) { return calls().close(file.release()); }

/// A file that did not exist before; it is removed again unless it was kept.
class NewFile {
 public:
  NewFile(const Folder& folder, std::string name)
      : folder_(folder),
        entry_{folder.get(), std::move(name)},
        file_(openat(entry_.folder, entry_.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666)),
        openError_(file_ ? 0 : errno),
        version_(file_ ? openFileVersion(file_.get()) : std::nullopt) {}

  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  ~NewFile() {
    const auto now = kept_ || !version_ ? std::nullopt : entryVersion(entry_.folder, entry_.name);
    if (now && isSameFile(*now, *version_)) calls().remove(entry_);
  }

  int openError() const { return openError_; }
  int descriptor() const { return file_.get(); }
  const Entry& entry() const { return entry_; }
  int syncFolder() const { return folder_.sync(file_.get()); }
  int close() { return closed(file_); }
  void keep() { kept_ = true; }

 private:
  const Folder& folder_;
  Entry entry_;
  UniqueFd file_;
  int openError_;
  std::optional<FileVersion> version_;
  bool kept_ = false;
};

int writeExisting(const Folder& folder, const std::string& name, ByteView data) {
  UniqueFd file(
      openat(folder.get(), name.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW));
  if (!file) return errno;
  struct stat status = {};
  if (fstat(file.get(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EINVAL;
  const int error = fill(file.get(), data);
  const int closeError = closed(file);
  return error != 0 ? error : closeError;
}

int writeNew(NewFile& file, bool inReplacementDirectory, ByteView data) {
  if (const int error = fill(file.descriptor(), data); error != 0) return error;
  // What replaces a file gets its lasting name later; waiting for the passing one would double the time.
  if (!inReplacementDirectory) {
    if (const int error = file.syncFolder(); error != 0) return error;
  }
  if (const int error = file.close(); error != 0) return error;
  file.keep();
  return 0;
}

int writePlainly(ByteView data, const std::string& path) {
  const FilePlace place = placeOf(path);
  const Folder folder(place.folder);
  if (!folder) return errno;
  NewFile file(folder, place.name);
  if (file.openError() == EEXIST) return writeExisting(folder, place.name, data);
  if (file.openError() != 0) return file.openError();
  return writeNew(file, isReplacementDirectory(place.folder), data);
}

/// The new file looks like the one whose name it takes; where not all of that is allowed, at least its mode.
int takeOver(const Folder& folder, const std::string& name, int file) {
  struct stat status = {};
  if (fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
    return errno == ENOENT ? 0 : errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  const UniqueFd old(
      openat(folder.get(), name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW));
  if (old && keepAttributes(old.get(), file) == 0) return 0;
  return calls().setMode(file, status.st_mode & 07777);
}

int writeAtomically(ByteView data, const std::string& path) {
  const FilePlace place = placeOf(path);
  const Folder folder(place.folder);
  if (!folder) return errno;
  NewFile file(folder, passingName());
  if (file.openError() != 0) return file.openError();
  if (const int error = takeOver(folder, place.name, file.descriptor()); error != 0) return error;
  if (const int error = fill(file.descriptor(), data); error != 0) return error;
  if (const int error = calls().rename(file.entry(), {folder.get(), place.name}); error != 0) return error;
  file.keep();
  if (const int error = file.syncFolder(); error != 0) return error;
  return file.close();
}

class DiskWriting : public DataWriting {
 public:
  void write(ByteView data, const URL& url, NSDataWritingOptions options) override {
    const std::string& path = filePath(url, FileAccess::write);
    const bool atomic = options == NSDataWritingOptions::atomic;
    const int error = atomic ? writeAtomically(data, path) : writePlainly(data, path);
    if (error != 0) throw fileError(error, FileAccess::write, path);
  }
};

}  // namespace

void writeToURL(ByteView data, const URL& url, NSDataWritingOptions options) {
  Service<DataWriting>::current().write(data, url, options);
}

DataWriting& DataWriting::standard() {
  static DiskWriting writing;
  return writing;
}

}  // namespace ostra
