#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ostra {

/// One name in an open folder. An absolute name needs no folder.
struct Entry {
  int folder = -1;
  std::string name;
};

/// The calls that change the disk while a file is written or replaced: one call of the system each, repeated
/// when a signal interrupts it. Each answers 0 or an errno. Replaceable through `Service<FileCalls>`, because
/// the promises about pictures must hold whichever of these calls fails and after whichever of them the
/// machine stops.
class FileCalls {
 public:
  virtual ~FileCalls() = default;

  /// Writes a part of `bytes`, at least one byte, and says how much in `written`.
  virtual int write(int file, std::span<const std::uint8_t> bytes, std::size_t& written);
  /// Reserves room for `size` bytes and leaves the file's length as it is.
  virtual int reserve(int file, std::int64_t size);
  virtual int setLength(int file, std::int64_t size);
  virtual int close(int file);

  /// Waits until a file or folder is on the disk.
  virtual int sync(int file);
  /// The same for the whole file system that holds `file`.
  virtual int syncFileSystem(int file);

  /// The two entries change places in one step. EINVAL or ENOSYS where that is unknown.
  virtual int exchange(const Entry& a, const Entry& b);
  /// Takes the place of what `to` names.
  virtual int rename(const Entry& from, const Entry& to);
  /// EEXIST when `to` exists.
  virtual int renameToNewName(const Entry& from, const Entry& to);
  virtual int link(const Entry& from, const Entry& to);
  virtual int remove(const Entry& entry);

  /// Numbers that are -1 stay.
  virtual int setOwner(int file, std::int64_t user, std::int64_t group);
  virtual int setMode(int file, unsigned mode);
  virtual int setAttribute(int file, const std::string& name, std::span<const char> value);
  virtual int removeAttribute(int file, const std::string& name);

  static FileCalls& standard();
};

}  // namespace ostra
