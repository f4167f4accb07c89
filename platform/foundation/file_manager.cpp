#include "platform/foundation/file_manager.h"

#include <cerrno>
#include <filesystem>

#include "platform/foundation/file_error.h"
#include "platform/foundation/file_place.h"
#include "platform/foundation/file_replacement.h"
#include "platform/foundation/replacement_directory.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

class DiskFileManager : public NSFileManager {
 public:
  URL URLForDirectory(NSSearchPathDirectory, NSSearchPathDomainMask, const URL& appropriateForURL,
                      bool) override {
    const std::string& path = filePath(appropriateForURL, FileAccess::write);
    return URL::fileURLWithPath(makeReplacementDirectory(placeOf(path), path));
  }

  /// Without an option that asks for it no backup remains, whatever its name; so none is made.
  void replaceItemAtURL(const URL& original, const URL& newItem, const std::optional<std::string>&,
                        NSFileManagerItemReplacementOptions) override {
    replaceFile(original, filePath(newItem, FileAccess::write));
  }

  void removeItemAtURL(const URL& url) override {
    const std::string& path = filePath(url, FileAccess::write);
    std::error_code error;
    const auto removed = std::filesystem::remove_all(path, error);
    if (error) throw fileError(error.value(), FileAccess::write, path);
    if (removed == 0) throw fileError(ENOENT, FileAccess::write, path);
  }
};

}  // namespace

NSFileManager& NSFileManager::defaultManager() { return Service<NSFileManager>::current(); }

NSFileManager& NSFileManager::standard() {
  static DiskFileManager manager;
  return manager;
}

}  // namespace ostra
