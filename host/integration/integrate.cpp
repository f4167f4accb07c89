#include "host/integration/integrate.h"

#include <filesystem>

#include "host/data_folder.h"
#include "host/exit_status.h"
#include "host/integration/file_managers.h"
#include "host/integration/home_files.h"
#include "host/integration/thunar_list.h"
#include "host/message.h"
#include "host/usage_error.h"

namespace ostra {
namespace {

constexpr const char* kIconFile = "icons/hicolor/scalable/apps/org.ostra.Ostra.svg";
constexpr const char* kPlainIcon = "image-x-generic";

/// What the installed file managers are to have.
struct Wanted {
  std::vector<MenuFile> files;
  std::vector<std::string> thunarActions;
  std::string remarks;
  bool nobody = true;
};

std::string sentence(const FileManager& manager, std::string_view rest) {
  return std::string(manager.name) + " " + std::string(rest) + "\n";
}

/// In such an action nothing stands for a percent sign.
bool canBeNamedToNemo(const Menu& menu) {
  std::string paths = menu.program;
  for (const MenuEntry& entry : menu.entries) paths += entry.bundle;
  return paths.find('%') == std::string::npos;
}

void addFor(const FileManager& manager, const Menu& menu, const std::string& templates,
            const DesktopFolders& folders, Wanted& wanted) {
  if (isServed(manager, folders)) {
    wanted.remarks += sentence(manager, "has the entries from a package of the system.");
    return;
  }
  if (manager.mechanism == MenuMechanism::nemoActions && !canBeNamedToNemo(menu)) {
    wanted.remarks += sentence(manager, "cannot run a program in a folder with a percent sign in its name.");
    return;
  }
  if (manager.mechanism == MenuMechanism::thunarActions)
    wanted.thunarActions = thunarActions(menu, templates);
  for (MenuFile& file : filesFor(manager.mechanism, menu, templates, folders)) {
    wanted.files.push_back(std::move(file));
  }
  if (lacksLibrary(manager, folders)) {
    wanted.remarks += sentence(manager, "shows the entries once the package " +
                                            std::string(manager.neededPackage) + " is installed.");
  }
}

Wanted wantedOf(const DesktopFolders& folders, const MenuSources& sources) {
  Menu menu = readMenu(sources);
  if (firstFile(folders.data, kIconFile).empty()) menu.icon = kPlainIcon;
  Wanted wanted;
  for (const FileManager& manager : knownFileManagers()) {
    if (!isInstalled(manager, folders)) continue;
    wanted.nobody = false;
    addFor(manager, menu, sources.templates, folders, wanted);
  }
  if (wanted.nobody) throw UsageError("No file manager was found that entries could be written for.");
  return wanted;
}

std::string hintsToRestart(const DesktopFolders& folders) {
  std::string hints;
  for (const FileManager& manager : knownFileManagers()) {
    if (manager.shownAfter.empty() || !isInstalled(manager, folders) || isServed(manager, folders)) continue;
    hints += sentence(manager, "shows changes after " + std::string(manager.shownAfter) + ".");
  }
  return hints;
}

}  // namespace

std::string integrate(const IntegrationOptions& options, const DesktopFolders& folders,
                      const MenuSources& sources, int& status) {
  const Wanted wanted = options.remove ? Wanted() : wantedOf(folders, sources);
  HomeFiles home(folders.userData + "/ostra/integration.plist", options.isRehearsal);
  std::error_code ignored;
  std::vector<std::string> more;
  const std::string list = thunarListFile(folders);
  if (!wanted.thunarActions.empty() && !std::filesystem::exists(list, ignored)) more.push_back(list);
  home.bring(wanted.files, more);
  bringThunarActions(wanted.thunarActions, folders, home);
  home.finish();

  status = home.hasFailed() ? kFailedFilesStatus : kCompletedStatus;
  std::string report = home.report();
  if (report.empty()) return wanted.remarks + (home.hasFailed() ? "" : "There is nothing to change.\n");
  return report + wanted.remarks + hintsToRestart(folders);
}

int integrate(const IntegrationOptions& options) {
  std::error_code ignored;
  const std::string bundles = std::filesystem::weakly_canonical(dataFolder("bundles"), ignored).string();
  const MenuSources sources{
      .program = programPath(), .bundles = bundles, .namedBundles = bundles, .templates = dataFolder("menu")};
  int status = kCompletedStatus;
  const std::string report = integrate(options, desktopFolders(), sources, status);
  const int printed = print(report);
  return status != kCompletedStatus ? status : printed;
}

}  // namespace ostra
