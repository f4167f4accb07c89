#pragma once
#include "platform/foundation/file_attributes.h"
#include "platform/foundation/file_calls.h"
#include "platform/foundation/folder.h"
#include "platform/foundation/url.h"

namespace ostra {

/// How a swap ended: done, an errno, or given up because somebody else had changed the old file.
struct SwapResult {
  int error = 0;
  bool changed = false;
};

/// The old file as it was seen when its attributes were kept. It is open at `file`.
struct SeenFile {
  FileVersion version;
  FileAttributes attributes;
  int file = -1;
};

/// The last step of a replacement: a finished file takes its lasting name.
class FileSwap {
 public:
  /// `fresh` names the new file and is open at `file`; `name` is an entry of `folder`. The folder must
  /// outlive this.
  FileSwap(const Folder& folder, Entry fresh, Entry name, int file);

  /// The new file for the old one, on the disk when this returns without an error. Else the old file has its
  /// name, in the state in which its user left it.
  SwapResult takePlaceOf(const SeenFile& old) const;
  /// The same for a name that is free.
  SwapResult moveToNewName() const;

 private:
  SwapResult renameOver(const SeenFile& old) const;
  void undoExchange() const;
  void undoRename(const Entry& safety) const;
  bool isFreshAt(const Entry& entry) const;

  const Folder& folder_;
  Entry fresh_;
  Entry name_;
  int file_;
};

}  // namespace ostra
