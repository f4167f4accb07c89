#include "tests/system/file_state.h"

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace ostra::test {
namespace {

constexpr unsigned kOwner = 1234;
constexpr unsigned kGroup = 2345;

/// An access list as the kernel takes it.
struct AccessList {
  struct Entry {
    std::uint16_t kind;
    std::uint16_t rights;
    std::uint32_t id;
  };
  static constexpr std::uint32_t kNobody = 0xffffffff;
  std::uint32_t version = 2;
  // The owner, another user, the group, the most that the last two may, everybody else.
  Entry entries[5] = {{1, 6, kNobody}, {2, 6, 4321}, {4, 4, kNobody}, {16, 6, kNobody}, {32, 0, kNobody}};
};

void setAttribute(const std::string& path, const char* name, const void* value, std::size_t size) {
  if (setxattr(path.c_str(), name, value, size, 0) != 0 && errno != EOPNOTSUPP)
    throw std::runtime_error("cannot mark " + path);
}

std::string attributeOf(const std::string& path, const std::string& name) {
  std::vector<char> value(65536);
  const ssize_t size = getxattr(path.c_str(), name.c_str(), value.data(), value.size());
  return size < 0 ? std::string() : std::string(value.data(), static_cast<std::size_t>(size));
}

std::map<std::string, std::string> attributesOf(const std::string& path) {
  std::map<std::string, std::string> attributes;
  std::vector<char> names(65536);
  const ssize_t size = listxattr(path.c_str(), names.data(), names.size());
  for (std::string_view rest(names.data(), size < 0 ? 0 : static_cast<std::size_t>(size)); !rest.empty();) {
    const std::string name(rest.substr(0, rest.find('\0')));
    if (!name.starts_with("security.")) attributes[name] = attributeOf(path, name);
    rest.remove_prefix(name.size() + 1);
  }
  return attributes;
}

}  // namespace

std::optional<FileState> fileStateAt(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return std::nullopt;
  return FileState{readFile(path), status.st_mode, status.st_uid, status.st_gid, attributesOf(path)};
}

void markFile(const std::string& path) {
  if (geteuid() == 0 && chown(path.c_str(), kOwner, kGroup) != 0)
    throw std::runtime_error("cannot give away " + path);
  std::filesystem::permissions(path, std::filesystem::perms(0640));
  setAttribute(path, "user.ostra.test", "kept", 4);
  const AccessList list;
  setAttribute(path, "system.posix_acl_access", &list, sizeof list);
}

std::string differenceOf(const std::optional<FileState>& now, const std::optional<FileState>& then) {
  if (!now || !then) return now ? "there" : "gone";
  std::string words;
  if (now->bytes != then->bytes) words += "other bytes (" + std::to_string(now->bytes.size()) + ") ";
  if (now->mode != then->mode) words += "other mode ";
  if (now->owner != then->owner || now->group != then->group) words += "other owner ";
  if (now->attributes != then->attributes) words += "other attributes ";
  return words;
}

}  // namespace ostra::test
