#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/url.h"

namespace ostra {

enum class NSSearchPathDirectory { itemReplacement = 99 };
enum class NSSearchPathDomainMask { user = 1 };
enum class NSFileManagerItemReplacementOptions : unsigned { none = 0 };

/// File operations. Every call throws `NSError` on failure and is safe on any thread.
class NSFileManager {
 public:
  virtual ~NSFileManager() = default;

  /// A fresh, empty folder, mode 0700, from which a rename onto `appropriateForURL` works. It is made on
  /// every call, whatever `create` says, and stays until somebody removes it.
  virtual URL URLForDirectory(NSSearchPathDirectory directory, NSSearchPathDomainMask domain,
                              const URL& appropriateForURL, bool create) = 0;

  /// Puts `newItem` in the place of `original`, which keeps its name, mode, owner, ACL and extended
  /// attributes and takes the new contents. At every instant the name holds one of the two, whole. A link is
  /// followed to its file. When `original` carries a file version that is no longer the file's, nothing is
  /// replaced.
  virtual void replaceItemAtURL(const URL& original, const URL& newItem,
                                const std::optional<std::string>& backupItemName,
                                NSFileManagerItemReplacementOptions options) = 0;

  /// Removes a file, or a folder with all that it holds; links are removed, not followed.
  virtual void removeItemAtURL(const URL& url) = 0;

  static NSFileManager& defaultManager();
  static NSFileManager& standard();
};

}  // namespace ostra
