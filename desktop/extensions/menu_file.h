#pragma once
#include <memory>
#include <string>
#include <tuple>

#include <sys/stat.h>

#include "desktop/extensions/menu.h"

namespace ostra::menu {

/// The description of the menu as it is on the disk now: read again when it changed, since a file manager
/// outlives an update of the program.
class MenuFile {
 public:
  explicit MenuFile(std::string path) : path_(std::move(path)) {}

  /// The one of this installation.
  static MenuFile& installed();

  /// Null where there is nothing to show. Holders keep what they got while the file changes.
  std::shared_ptr<const Menu> current();

 private:
  using Version = std::tuple<dev_t, ino_t, off_t, time_t, long>;

  std::string path_;
  Version version_{};
  std::shared_ptr<const Menu> menu_;
};

}  // namespace ostra::menu
