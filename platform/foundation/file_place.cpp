#include "platform/foundation/file_place.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>

#include <unistd.h>

#include "platform/foundation/error.h"
#include "platform/foundation/url.h"

namespace ostra {
namespace {

/// What the kernel allows before it speaks of a loop.
constexpr int kMostLinks = 40;

/// Without links; nothing, with errno set, when something of it is missing.
std::optional<std::string> resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
  if (real == nullptr) return std::nullopt;
  return real.get();
}

std::optional<std::string> linkTarget(const std::string& path) {
  char target[PATH_MAX];
  const ssize_t length = readlink(path.c_str(), target, sizeof target);
  if (length < 0) return std::nullopt;
  return std::string(target, static_cast<std::size_t>(length));
}

FilePlace split(const std::string& path) {
  const URL url = URL::fileURLWithPath(path);
  return {url.deletingLastPathComponent().path(), url.lastPathComponent()};
}

}  // namespace

FilePlace placeOf(const std::string& path) {
  std::string place = path;
  for (int links = 0; links < kMostLinks; ++links) {
    if (const auto real = resolved(place)) return split(*real);
    if (errno != ENOENT) throw fileError(errno, FileAccess::write, path);
    const FilePlace missing = split(place);
    const auto folder = resolved(missing.folder);
    if (!folder) throw fileError(errno, FileAccess::write, path);
    FilePlace entry = {*folder, missing.name};
    const auto target = linkTarget(entry.path());
    if (!target) return entry;
    place = target->starts_with('/') ? *target : FilePlace::joined(*folder, *target);
  }
  throw fileError(ELOOP, FileAccess::write, path);
}

}  // namespace ostra
