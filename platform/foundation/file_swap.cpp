#include "platform/foundation/file_swap.h"

#include <cerrno>
#include <utility>

#include "platform/foundation/file_place.h"
#include "platform/foundation/file_version.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

FileCalls& calls() { return Service<FileCalls>::current(); }

bool isUnknownCall(int error) { return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP; }

/// Where files may go one way only, as between project quotas, an exchange is EXDEV and a rename works.
bool isExchangeImpossible(int error) { return isUnknownCall(error) || error == EXDEV; }

/// Moving a file changes its time of change, so what that time would tell is compared piece by piece.
bool holds(const Entry& entry, const SeenFile& old) {
  const auto now = entryVersion(entry.folder, entry.name);
  return now && isSameContents(*now, old.version) && fileAttributes(old.file) == old.attributes;
}

/// A second name of the old file while a plain rename is not on the disk yet.
Entry safetyName(const Entry& fresh) {
  return {fresh.folder, FilePlace::joined(fresh.name.substr(0, fresh.name.rfind('/')), ".previous")};
}

}  // namespace

FileSwap::FileSwap(const Folder& folder, Entry fresh, Entry name, int file)
    : folder_(folder), fresh_(std::move(fresh)), name_(std::move(name)), file_(file) {}

SwapResult FileSwap::takePlaceOf(const SeenFile& old) const {
  const int error = calls().exchange(fresh_, name_);
  if (isExchangeImpossible(error)) return renameOver(old);
  if (error != 0) return {error};
  if (!holds(fresh_, old)) {
    undoExchange();
    return {0, true};
  }
  if (const int syncError = folder_.sync(file_); syncError != 0) {
    undoExchange();
    return {syncError};
  }
  // The new file is in place: an old one that cannot be removed is litter, not a failure.
  calls().remove(fresh_);
  return {};
}

SwapResult FileSwap::moveToNewName() const {
  int error = calls().renameToNewName(fresh_, name_);
  if (isUnknownCall(error)) {
    error = calls().link(fresh_, name_);
    if (error == 0) calls().remove(fresh_);
  }
  if (error == EEXIST) return {0, true};
  return {error != 0 ? error : folder_.sync(file_)};
}

SwapResult FileSwap::renameOver(const SeenFile& old) const {
  const Entry safety = safetyName(fresh_);
  const bool safe = calls().link(name_, safety) == 0;
  int error = 0;
  const bool unchanged = holds(safe ? safety : name_, old);
  if (unchanged) {
    error = calls().rename(fresh_, name_);
    if (error == 0) {
      error = folder_.sync(file_);
      if (error != 0 && safe) {
        undoRename(safety);
        return {error};
      }
    }
  }
  if (safe) calls().remove(safety);
  return {error, !unchanged};
}

void FileSwap::undoExchange() const {
  if (calls().exchange(fresh_, name_) == 0) {
    // Somebody put a third file there in between: it is the one that must stay.
    if (!isFreshAt(fresh_)) calls().exchange(fresh_, name_);
  } else if (isFreshAt(name_)) {
    calls().rename(fresh_, name_);
  }
}

void FileSwap::undoRename(const Entry& safety) const {
  if (!isFreshAt(name_)) return;
  calls().link(name_, fresh_);
  calls().rename(safety, name_);
}

bool FileSwap::isFreshAt(const Entry& entry) const {
  const auto now = entryVersion(entry.folder, entry.name);
  const auto fresh = openFileVersion(file_);
  return now && fresh && isSameFile(*now, *fresh);
}

}  // namespace ostra
