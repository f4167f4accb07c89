#include "platform/foundation/folder.h"

#include <cerrno>

#include <fcntl.h>

#include "platform/foundation/file_calls.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

UniqueFd openFolder(const std::string& path) {
  UniqueFd readable(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (readable || errno != EACCES) return readable;
  // One that may be written and searched but not listed.
  return UniqueFd(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

/// Network and special file systems that know no such call have nothing to wait for.
bool isUnknownCall(int error) { return error == EINVAL || error == EOPNOTSUPP || error == ENOSYS; }

}  // namespace

Folder::Folder(const std::string& path) : descriptor_(openFolder(path)) {}

int Folder::sync(int file) const {
  FileCalls& calls = Service<FileCalls>::current();
  int error = calls.sync(get());
  // EBADF: open as a mere place.
  if (error == EBADF || isUnknownCall(error)) error = calls.syncFileSystem(file);
  return isUnknownCall(error) ? 0 : error;
}

}  // namespace ostra
