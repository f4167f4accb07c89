#include "platform/colorsync/profile_folders.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/foundation/unique_fd.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

/// A link to the root of the disk, say, must not make the list of profiles a search of everything.
constexpr int kDeepest = 8;
constexpr std::size_t kMostFolders = 2000;

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

struct Entries {
  std::vector<std::string> files, folders;
};

bool isProfileName(std::string_view name) {
  if (name.size() < 5) return false;
  std::string suffix(name.substr(name.size() - 4));
  std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return suffix == ".icc" || suffix == ".icm";
}

/// The kind of an entry, its link followed; looked at before it is opened, because opening alone already
/// wakes a pipe's writer or rewinds a tape. 0 for one that leads nowhere.
mode_t kindOf(int folder, const dirent& entry) {
  if (entry.d_type == DT_REG) return S_IFREG;
  if (entry.d_type == DT_DIR) return S_IFDIR;
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return 0;
  struct stat status {};
  return fstatat(folder, entry.d_name, &status, 0) == 0 ? status.st_mode & S_IFMT : 0;
}

Entries entriesOf(DIR* folder) {
  Entries entries;
  while (const dirent* entry = readdir(folder)) {
    const std::string_view name = entry->d_name;
    if (name == "." || name == "..") continue;
    const mode_t kind = kindOf(dirfd(folder), *entry);
    if (kind == S_IFDIR) entries.folders.emplace_back(name);
    if (kind == S_IFREG && isProfileName(name)) entries.files.emplace_back(name);
  }
  std::sort(entries.files.begin(), entries.files.end());
  std::sort(entries.folders.begin(), entries.folders.end());
  return entries;
}

class Visit {
 public:
  explicit Visit(const ProfileFileVisitor& visitor) : visitor_(visitor) {}

  /// False when the visitor wants no more.
  bool folder(const std::string& path, int depth) {
    if (depth > kDeepest || entered_.size() == kMostFolders) return true;
    const OpenFolder open(opendir(path.c_str()));
    if (!open || !isNew(dirfd(open.get()))) return true;
    const Entries entries = entriesOf(open.get());
    const std::string below = path + "/";
    const auto visitFile = [&](const std::string& name) {
      return file(dirfd(open.get()), name, below + name);
    };
    const auto visitFolder = [&](const std::string& name) { return folder(below + name, depth + 1); };
    return std::all_of(entries.files.begin(), entries.files.end(), visitFile) &&
           std::all_of(entries.folders.begin(), entries.folders.end(), visitFolder);
  }

 private:
  bool isNew(int folder) {
    struct stat status {};
    return fstat(folder, &status) == 0 && entered_.emplace(status.st_dev, status.st_ino).second;
  }

  bool file(int folder, const std::string& name, const std::string& path) {
    const UniqueFd file(openat(folder, name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return true;
    return visitor_(path, file.get());
  }

  const ProfileFileVisitor& visitor_;
  std::set<std::pair<dev_t, ino_t>> entered_;
};

}  // namespace

std::vector<std::string> profileFolders() {
  std::vector<std::string> folders;
  const auto own = userDataFolder();
  if (own) folders.push_back(*own + "/icc");
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') folders.push_back(std::string(home) + "/.color/icc");
  if (own) folders.push_back(*own + "/color/icc");
  for (const std::string& folder : systemDataFolders()) folders.push_back(folder + "/color/icc");
  for (const char* folder : {"/var/lib/color/icc", "/var/lib/colord/icc"}) folders.emplace_back(folder);
  return folders;
}

void visitProfileFiles(const std::vector<std::string>& folders, const ProfileFileVisitor& visitor) {
  Visit visit(visitor);
  for (const std::string& folder : folders) {
    if (!visit.folder(folder, 0)) return;
  }
}

}  // namespace ostra
