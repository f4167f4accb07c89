#include "platform/foundation/url.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include <unistd.h>

#include "platform/foundation/url_text.h"

namespace ostra {
namespace {

constexpr std::string_view kFile = "file";

std::string absolute(std::string_view path) {
  if (path.starts_with('/')) return std::string(path);
  const std::unique_ptr<char, decltype(&std::free)> here(getcwd(nullptr, 0), std::free);
  if (here == nullptr) return std::string(path);
  std::string joined = here.get();
  if (!joined.ends_with('/')) joined += '/';
  return joined.append(path);
}

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

/// Where the extension's dot stands in a file name, or npos.
std::size_t extensionDot(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  const bool none = dot == std::string_view::npos || dot == 0 || dot + 1 == name.size();
  if (none || name.find(' ', dot) != std::string_view::npos) return std::string_view::npos;
  return dot;
}

}  // namespace

URL::URL(std::string scheme, std::string path) : scheme_(std::move(scheme)), path_(std::move(path)) {}

URL URL::fileURLWithPath(std::string_view path) { return URL(std::string(kFile), absolute(path)); }

std::optional<URL> URL::withDataRepresentation(ByteView data) {
  const std::string_view text(reinterpret_cast<const char*>(data.data()), data.size());
  const auto parts = splitAbsoluteURL(text);
  if (!parts) return std::nullopt;
  auto path = percentDecoded(parts->path);
  if (!path || path->find('\0') != std::string::npos) return std::nullopt;
  if (parts->scheme != kFile) {
    const std::string slashes = parts->authority.empty() ? "" : "//";
    return URL(parts->scheme + ":" + slashes + parts->authority, std::move(*path));
  }
  const bool local = parts->authority.empty() || parts->authority == "localhost";
  if (!local || !path->starts_with('/')) return std::nullopt;
  return URL(std::string(kFile), std::move(*path));
}

bool URL::isFileURL() const { return scheme_ == kFile; }

const std::string& URL::path() const { return path_; }

std::string URL::absoluteString() const {
  return (isFileURL() ? "file://" : scheme_) + percentEncodedPath(path_);
}

std::string URL::lastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(path_);
  if (path == "/") return "/";
  return std::string(path.substr(path.rfind('/') + 1));
}

std::string URL::pathExtension() const {
  const std::string name = lastPathComponent();
  const std::size_t dot = extensionDot(name);
  return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

URL URL::deletingLastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(path_);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return URL(scheme_, "");
  return URL(scheme_, std::string(withoutTrailingSlashes(path.substr(0, slash + 1))));
}

URL URL::deletingPathExtension() const {
  const std::string_view path = withoutTrailingSlashes(path_);
  const std::string extension = pathExtension();
  const std::size_t cut = extension.empty() ? 0 : extension.size() + 1;
  return URL(scheme_, std::string(path.substr(0, path.size() - cut)));
}

URL URL::appendingPathExtension(std::string_view extension) const {
  std::string path(withoutTrailingSlashes(path_));
  if (!extension.empty()) path.append(".").append(extension);
  return URL(scheme_, std::move(path));
}

URL URL::appendingPathComponent(std::string_view component) const {
  std::string path = path_;
  if (!path.ends_with('/')) path += '/';
  return URL(scheme_, path.append(component));
}

const std::optional<FileVersion>& URL::fileVersion() const { return version_; }

URL URL::withFileVersion(const FileVersion& version) const {
  URL url = *this;
  url.version_ = version;
  return url;
}

}  // namespace ostra
