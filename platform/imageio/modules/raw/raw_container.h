#pragma once
#include <optional>
#include <string>

#include "platform/imageio/modules/raw/raw_directories.h"

namespace ostra {

enum class RawKind { tiff, cr2, cr3, crw, mrw, orf, raf, rw2 };

/// What a raw file says of itself, before any of its pixels is looked at.
struct RawContainer {
  RawKind kind = RawKind::tiff;
  /// The type identifier.
  std::string type;
  /// Of those that are built as TIFF is.
  RawDirectories directories;
  /// False where the file tells of raw pixels behind its end.
  bool isWhole = true;

  bool hasDirectories() const;
};

/// Nothing when the file is no raw file.
std::optional<RawContainer> readRawContainer(FileBytes file);

}  // namespace ostra
