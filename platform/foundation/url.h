#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra {

/// Which state of which file a URL was opened as. Two versions of the same bytes differ when the file was
/// replaced, rewritten or touched in between. Times are nanoseconds since 1970.
struct FileVersion {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0;
  std::int64_t changed = 0;

  friend bool operator==(const FileVersion&, const FileVersion&) = default;
};

/// The place of a file, or a URL of another scheme. A plain value. A file's path is bytes, not necessarily
/// UTF-8, and is never normalised. Derived URLs (a sibling, a folder) carry no file version.
class URL {
 public:
  static URL fileURLWithPath(std::string_view path);
  /// From the text of an absolute URL, such as "file:///a%20b.png"; nothing when it is not one.
  static std::optional<URL> withDataRepresentation(ByteView data);

  bool isFileURL() const;
  /// The file's path as bytes; of another scheme the decoded path part.
  const std::string& path() const;
  std::string absoluteString() const;

  std::string lastPathComponent() const;
  /// Without the dot; empty when there is none. A leading dot alone, a trailing dot and a blank after the dot
  /// make no extension.
  std::string pathExtension() const;
  URL deletingLastPathComponent() const;
  URL deletingPathExtension() const;
  URL appendingPathExtension(std::string_view extension) const;
  URL appendingPathComponent(std::string_view component) const;

  const std::optional<FileVersion>& fileVersion() const;
  URL withFileVersion(const FileVersion& version) const;

  /// True when access was granted and must be given back with `stopAccessingSecurityScopedResource`; false is
  /// normal for a file that needs no grant.
  bool startAccessingSecurityScopedResource() const;
  void stopAccessingSecurityScopedResource() const;

  friend bool operator==(const URL& a, const URL& b) { return a.scheme_ == b.scheme_ && a.path_ == b.path_; }

 private:
  URL(std::string scheme, std::string path);
  std::string scheme_;
  std::string path_;
  std::optional<FileVersion> version_;
};

/// Who grants access to a URL for a scope. Replaceable through `Service<ScopedAccess>`.
class ScopedAccess {
 public:
  virtual ~ScopedAccess() = default;
  virtual bool start(const URL& url) = 0;
  virtual void stop(const URL& url) = 0;
  static ScopedAccess& standard();
};

}  // namespace ostra
