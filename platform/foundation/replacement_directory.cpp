#include "platform/foundation/replacement_directory.h"

#include <cerrno>
#include <charconv>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/foundation/file_calls.h"
#include "platform/foundation/folder.h"
#include "platform/foundation/service.h"
#include "platform/foundation/unique_fd.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

constexpr std::string_view kPrefix = ".ostra-";
constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr std::size_t kRandomLetters = 6;
constexpr int kAttempts = 100;

bool isLetter(char c) { return kLetters.find(c) != std::string_view::npos; }

/// The path of a new folder in `parent`; empty, with errno set, when that failed.
std::string makeFolderIn(const std::string& parent) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::string folder = FilePlace::joined(parent, passingName());
    if (mkdir(folder.c_str(), S_IRWXU) == 0) return folder;
    if (errno != EEXIST) return {};
  }
  return {};
}

/// Whether an entry of `folder` really reaches the folder `target`: one is put there, by a link, which unlike
/// a rename can take no other's place. Device numbers do not tell: subvolumes and bind mounts share them.
bool reaches(const std::string& folder, const Folder& target) {
  FileCalls& calls = Service<FileCalls>::current();
  const Entry probe = {-1, FilePlace::joined(folder, "probe")};
  const UniqueFd file(open(probe.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file) return false;
  const Entry there = {target.get(), passingName()};
  const bool reached = calls.link(probe, there) == 0;
  if (reached) calls.remove(there);
  calls.remove(probe);
  return reached;
}

std::string makeInCache(const std::string& target) {
  const auto cache = replacementCacheFolder();
  const Folder targetFolder(target);
  if (!cache || !targetFolder || !makeFolders(*cache)) return {};
  std::string folder = makeFolderIn(*cache);
  if (folder.empty() || reaches(folder, targetFolder)) return folder;
  rmdir(folder.c_str());
  return {};
}

}  // namespace

std::string passingName() {
  unsigned char random[kRandomLetters] = {};
  // Small requests are answered whole. Were they not, the name would be guessable, and still never another's
  // place.
  if (getrandom(random, sizeof random, 0) < 0) random[0] = static_cast<unsigned char>(getpid());
  std::string name(kPrefix);
  name.append(std::to_string(getpid())).append("-");
  for (const unsigned char byte : random) name += kLetters[byte % kLetters.size()];
  return name;
}

std::optional<int> processOfPassingName(std::string_view name) {
  if (!name.starts_with(kPrefix)) return std::nullopt;
  name.remove_prefix(kPrefix.size());
  int process = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
  if (error != std::errc() || process <= 0) return std::nullopt;
  name.remove_prefix(static_cast<std::size_t>(end - name.data()));
  if (name.size() != kRandomLetters + 1 || name[0] != '-') return std::nullopt;
  for (const char c : name.substr(1)) {
    if (!isLetter(c)) return std::nullopt;
  }
  return process;
}

std::string makeReplacementDirectory(const FilePlace& place, const std::string& path) {
  std::string folder = makeInCache(place.folder);
  if (folder.empty()) folder = makeFolderIn(place.folder);
  if (folder.empty()) throw fileError(errno, FileAccess::write, path);
  return folder;
}

bool isReplacementDirectory(std::string_view folder) {
  return processOfPassingName(folder.substr(folder.rfind('/') + 1)).has_value();
}

std::optional<std::string> replacementCacheFolder() { return cacheFolder(); }

}  // namespace ostra
