#include "platform/foundation/file_attributes.h"

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "platform/foundation/file_calls.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

using Text = std::vector<char>;

constexpr std::string_view kUser = "user.";
constexpr std::string_view kSecurity = "security.";
/// The access lists of local file systems and of NFS 4.
constexpr std::string_view kAccessList = "system.posix_acl_access";
constexpr std::string_view kNetworkAccessList = "system.nfs4_acl";
/// Labels that vouch for the contents, which are new, or give rights to a program.
constexpr std::string_view kNotForNewContents[] = {"security.ima", "security.evm", "security.capability"};

FileCalls& calls() { return Service<FileCalls>::current(); }

bool isUsers(std::string_view name) { return name.starts_with(kUser); }

bool isAccessList(std::string_view name) { return name == kAccessList || name == kNetworkAccessList; }

bool isUnsupported(int error) { return error == EOPNOTSUPP || error == ENOSYS; }

/// The answer of a call that is first asked how much it would answer; again when it grew in between. Nothing
/// when it failed, with errno set.
template <class Ask>
std::optional<Text> wholeAnswer(Ask ask) {
  for (;;) {
    const ssize_t size = ask(nullptr, 0);
    if (size < 0) return std::nullopt;
    Text text(static_cast<std::size_t>(size));
    if (size == 0) return text;
    const ssize_t got = ask(text.data(), text.size());
    if (got >= 0) {
      text.resize(static_cast<std::size_t>(got));
      return text;
    }
    if (errno != ERANGE) return std::nullopt;
  }
}

std::optional<Text> attribute(int file, const std::string& name) {
  return wholeAnswer([&](char* room, std::size_t size) { return fgetxattr(file, name.c_str(), room, size); });
}

/// Nothing, with errno set, when they cannot be listed.
std::optional<std::vector<std::string>> attributeNames(int file) {
  const auto list = wholeAnswer([&](char* room, std::size_t size) { return flistxattr(file, room, size); });
  if (!list) return std::nullopt;
  std::vector<std::string> names;
  for (std::string_view rest(list->data(), list->size()); !rest.empty();) {
    const std::size_t length = rest.find('\0');
    names.emplace_back(rest.substr(0, length));
    rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
  }
  return names;
}

/// A file system without attributes has none.
std::optional<std::vector<std::string>> namesWhereSupported(int file) {
  auto names = attributeNames(file);
  if (!names && isUnsupported(errno)) names.emplace();
  return names;
}

int keepAttribute(int from, int to, const std::string& name) {
  const auto value = attribute(from, name);
  // It may have gone since it was listed.
  if (!value) return errno == ENODATA ? 0 : errno;
  const auto present = attribute(to, name);
  if (present && *present == *value) return 0;
  return calls().setAttribute(to, name, *value);
}

template <class Choice>
int keepChosen(int from, int to, const std::vector<std::string>& names, Choice choice) {
  for (const std::string& name : names) {
    if (!choice(name)) continue;
    if (const int error = keepAttribute(from, to, name); error != 0) return error;
  }
  return 0;
}

/// The folder in which `to` was made may have given it a list that `from` never had.
int dropForeignAccessList(int to, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (name == kAccessList) return 0;
  }
  if (!attribute(to, std::string(kAccessList))) return 0;
  return calls().removeAttribute(to, std::string(kAccessList));
}

int keepOwner(int to, const struct stat& from, const struct stat& now) {
  const std::int64_t user = from.st_uid == now.st_uid ? -1 : std::int64_t{from.st_uid};
  const std::int64_t group = from.st_gid == now.st_gid ? -1 : std::int64_t{from.st_gid};
  return user < 0 && group < 0 ? 0 : calls().setOwner(to, user, group);
}

constexpr mode_t kModeBits = 07777;

/// Setting it may drop the set-group bit without a word, so what came of it is looked at.
int keepMode(int to, const struct stat& from) {
  struct stat now = {};
  if (fstat(to, &now) != 0) return errno;
  const mode_t mode = from.st_mode & kModeBits;
  if ((now.st_mode & kModeBits) != mode) {
    if (const int error = calls().setMode(to, mode); error != 0) return error;
  }
  if (fstat(to, &now) != 0) return errno;
  const bool same =
      (now.st_mode & kModeBits) == mode && now.st_uid == from.st_uid && now.st_gid == from.st_gid;
  return same ? 0 : EPERM;
}

void keepLabels(int from, int to, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (!name.starts_with(kSecurity)) continue;
    bool kept = true;
    for (const std::string_view other : kNotForNewContents) kept = kept && name != other;
    if (kept) keepAttribute(from, to, name);
  }
}

void keepFlags(int from, int to) {
  constexpr int kKept = FS_NODUMP_FL | FS_NOATIME_FL | FS_SYNC_FL;
  int old = 0;
  int now = 0;
  if (ioctl(from, FS_IOC_GETFLAGS, &old) != 0 || ioctl(to, FS_IOC_GETFLAGS, &now) != 0) return;
  const int wanted = (now & ~kKept) | (old & kKept);
  if (wanted != now) ioctl(to, FS_IOC_SETFLAGS, &wanted);
}

}  // namespace

std::optional<FileAttributes> fileAttributes(int file) {
  struct stat status = {};
  if (fstat(file, &status) != 0) return std::nullopt;
  const auto names = namesWhereSupported(file);
  if (!names) return std::nullopt;
  FileAttributes attributes{status.st_uid, status.st_gid, status.st_mode & kModeBits, {}};
  for (const std::string& name : *names) {
    if (!isUsers(name) && !isAccessList(name)) continue;
    auto value = attribute(file, name);
    // It may have gone since it was listed.
    if (!value && errno == ENODATA) continue;
    if (!value) return std::nullopt;
    attributes.named.emplace(name, std::move(*value));
  }
  return attributes;
}

int keepAttributes(int from, int to) {
  struct stat old = {};
  struct stat fresh = {};
  if (fstat(from, &old) != 0 || fstat(to, &fresh) != 0) return errno;
  const auto names = namesWhereSupported(from);
  if (!names) return errno;

  // In this order: the owner of a file that is read only may no longer set user attributes, a new owner
  // clears bits of the mode, and an access list changes those of the group.
  if (const int error = keepChosen(from, to, *names, isUsers); error != 0) return error;
  if (const int error = keepOwner(to, old, fresh); error != 0) return error;
  if (const int error = dropForeignAccessList(to, *names); error != 0) return error;
  if (const int error = keepChosen(from, to, *names, isAccessList); error != 0) return error;
  if (const int error = keepMode(to, old); error != 0) return error;
  keepLabels(from, to, *names);
  keepFlags(from, to);
  return 0;
}

}  // namespace ostra
