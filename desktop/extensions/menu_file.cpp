#include "desktop/extensions/menu_file.h"

namespace ostra::menu {

MenuFile& MenuFile::installed() {
  static MenuFile file(OSTRA_MENU_FILE);
  return file;
}

std::shared_ptr<const Menu> MenuFile::current() {
  struct stat found {};
  if (stat(path_.c_str(), &found) != 0) {
    version_ = {};
    return menu_ = nullptr;
  }
  const Version version{found.st_dev, found.st_ino, found.st_size, found.st_mtim.tv_sec,
                        found.st_mtim.tv_nsec};
  if (version != version_) {
    version_ = version;
    auto menu = readMenu(path_);
    menu_ = menu ? std::make_shared<const Menu>(std::move(*menu)) : nullptr;
  }
  return menu_;
}

}  // namespace ostra::menu
