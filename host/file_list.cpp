#include "host/file_list.h"

#include <array>
#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "host/usage_error.h"
#include "platform/foundation/error.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {
namespace {

[[noreturn]] void refuse(const std::string& file) {
  throw UsageError("--files-from: " + fileError(errno, FileAccess::read, file).localizedDescription());
}

std::string readAll(int descriptor, const std::string& file) {
  std::string text;
  std::array<char, 65536> buffer{};
  for (;;) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno != EINTR) refuse(file);
    if (count == 0) return text;
    if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

std::string contentsOf(const std::string& file) {
  if (file == "-") return readAll(STDIN_FILENO, "standard input");
  const UniqueFd descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!descriptor) refuse(file);
  return readAll(descriptor.get(), file);
}

}  // namespace

std::vector<std::string> readFileList(const std::string& file) {
  const std::string text = contentsOf(file);
  std::vector<std::string> paths;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view path = rest.substr(0, rest.find('\0'));
    if (!path.empty()) paths.emplace_back(path);
    rest.remove_prefix(std::min(path.size() + 1, rest.size()));
  }
  return paths;
}

}  // namespace ostra
