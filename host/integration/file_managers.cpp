#include "host/integration/file_managers.h"

#include <array>
#include <filesystem>

#include <unistd.h>

namespace ostra {
namespace {

constexpr std::string_view kActions = "file-manager/actions/org.ostra.menu.desktop";

constexpr std::array kFileManagers{
    FileManager{.name = "Dolphin",
                .executable = "dolphin",
                .mechanism = MenuMechanism::serviceMenu,
                .servedByData = "kio/servicemenus/org.ostra.Ostra.desktop"},
    FileManager{.name = "Nautilus",
                .executable = "nautilus",
                .mechanism = MenuMechanism::nautilusScripts,
                .servedByLibrary = "nautilus/extensions-4/libostra-nautilus.so"},
    FileManager{.name = "Nemo",
                .executable = "nemo",
                .mechanism = MenuMechanism::nemoActions,
                .servedByLibrary = "nemo/extensions-3.0/libostra-nemo.so"},
    FileManager{.name = "Caja",
                .executable = "caja",
                .mechanism = MenuMechanism::cajaScripts,
                .servedByLibrary = "caja/extensions-2.0/libostra-caja.so"},
    FileManager{.name = "Thunar",
                .executable = "thunar",
                .mechanism = MenuMechanism::thunarActions,
                .servedByLibrary = "thunarx-3/ostra-thunar.so",
                .shownAfter = "“thunar -q”"},
    FileManager{.name = "PCManFM",
                .executable = "pcmanfm",
                .mechanism = MenuMechanism::fileManagerActions,
                .servedByData = kActions,
                .shownAfter = "the next log-in",
                .neededLibrary = "libfm/modules/gtk-menu-actions.so",
                .neededPackage = "libfm-modules"},
    FileManager{.name = "PCManFM-Qt",
                .executable = "pcmanfm-qt",
                .mechanism = MenuMechanism::fileManagerActions,
                .servedByData = kActions,
                .shownAfter = "“pcmanfm-qt --quit”, or the next log-in"},
};

std::vector<MenuFile> in(const std::string& folder, std::vector<MenuFile> files) {
  for (MenuFile& file : files) file.name = folder + "/" + file.name;
  return files;
}

}  // namespace

std::span<const FileManager> knownFileManagers() { return kFileManagers; }

bool isInstalled(const FileManager& manager, const DesktopFolders& folders) {
  for (const std::string& folder : folders.executables) {
    const std::string path = folder + "/" + std::string(manager.executable);
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored) && access(path.c_str(), X_OK) == 0) return true;
  }
  return false;
}

bool isServed(const FileManager& manager, const DesktopFolders& folders) {
  const auto has = [](const std::vector<std::string>& places, std::string_view name) {
    return !name.empty() && !firstFile(places, std::string(name)).empty();
  };
  return has(folders.data, manager.servedByData) || has(folders.libraries, manager.servedByLibrary);
}

bool lacksLibrary(const FileManager& manager, const DesktopFolders& folders) {
  return !manager.neededLibrary.empty() &&
         firstFile(folders.libraries, std::string(manager.neededLibrary)).empty();
}

std::vector<MenuFile> filesFor(MenuMechanism mechanism, const Menu& menu, const std::string& templates,
                               const DesktopFolders& folders) {
  switch (mechanism) {
    case MenuMechanism::serviceMenu:
      return in(folders.userData + "/kio/servicemenus", {serviceMenuFile(menu, templates)});
    case MenuMechanism::fileManagerActions:
      return in(folders.userData + "/file-manager/actions", fileManagerActionFiles(menu, templates));
    case MenuMechanism::nemoActions:
      return in(folders.userData + "/nemo/actions", nemoActionFiles(menu, templates));
    case MenuMechanism::nautilusScripts:
      return in(folders.userData + "/nautilus/scripts", scriptFiles(menu, templates));
    case MenuMechanism::cajaScripts:
      return in(folders.userConfig + "/caja/scripts", scriptFiles(menu, templates));
    case MenuMechanism::thunarActions:
      return {};
  }
  return {};
}

}  // namespace ostra
