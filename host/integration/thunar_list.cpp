#include "host/integration/thunar_list.h"

#include <filesystem>
#include <optional>

#include <sys/stat.h>

#include "host/integration/custom_actions.h"
#include "platform/foundation/data.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_place.h"
#include "platform/foundation/file_replacement.h"
#include "platform/foundation/file_version.h"
#include "platform/foundation/replacement_directory.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

constexpr const char* kList = "/Thunar/uca.xml";
constexpr const char* kEmptyList = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n";

ByteView bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Which version of the file is read; nothing where there is none.
std::optional<FileVersion> versionOf(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0) return fileVersionOf(status);
  if (errno == ENOENT) return std::nullopt;
  throw fileError(errno, FileAccess::read, path);
}

std::string systemsList(const DesktopFolders& folders) {
  const std::string path = firstFile(folders.config, kList + 1);
  return path.empty() ? kEmptyList : readText(path);
}

/// What somebody writes meanwhile is not lost: then the list is a changed file, and stays.
void replaceList(const std::string& path, const FileVersion& version, const std::string& text) {
  const std::string staged = FilePlace::joined(placeOf(path).folder, passingName());
  try {
    writeToURL(bytesOf(text), URL::fileURLWithPath(staged));
    replaceFile(URL::fileURLWithPath(path).withFileVersion(version), staged);
  } catch (const NSError&) {
    std::error_code ignored;
    std::filesystem::remove(staged, ignored);
    throw;
  }
}

void makeList(const std::string& path, const std::string& text) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  if (!makeFolders(folder)) throw fileError(errno, FileAccess::write, folder);
  writeToURL(bytesOf(text), URL::fileURLWithPath(path), NSDataWritingOptions::atomic);
}

void addToMissingList(const std::string& path, const std::vector<std::string>& actions,
                      const DesktopFolders& folders, HomeFiles& home) {
  home.record().madeList.reset();
  if (actions.empty()) return;
  const std::string start = systemsList(folders);
  const std::string list = withCustomActions(start, actions);
  home.record().madeList = fingerprintOf(start);
  if (!home.isRehearsal()) makeList(path, list);
  home.tellWritten(path);
}

void changeList(const std::string& path, const FileVersion& version, const std::vector<std::string>& actions,
                HomeFiles& home) {
  const std::string before = readText(path);
  const std::string after =
      actions.empty() ? withoutCustomActions(before) : withCustomActions(before, actions);
  const bool goes = actions.empty() && home.record().madeList == fingerprintOf(after);
  if (goes && !home.isRehearsal()) std::filesystem::remove(placeOf(path).path());
  if (goes) home.tellRemoved(path);
  if (actions.empty()) home.record().madeList.reset();
  if (goes || after == before) return;
  if (!home.isRehearsal()) replaceList(path, version, after);
  home.tellWritten(path);
}

}  // namespace

std::string thunarListFile(const DesktopFolders& folders) { return folders.userConfig + kList; }

void bringThunarActions(const std::vector<std::string>& actions, const DesktopFolders& folders,
                        HomeFiles& home) {
  const std::string path = thunarListFile(folders);
  try {
    if (const auto version = versionOf(path)) {
      changeList(path, *version, actions, home);
    } else {
      addToMissingList(path, actions, folders, home);
    }
  } catch (const CustomActionsError& failure) {
    home.tellFailure("“" + path + "” stays as it is: " + failure.what() + ".");
  } catch (const NSError& failure) {
    home.tellFailure(failure.localizedDescription());
  } catch (const std::filesystem::filesystem_error& failure) {
    home.tellFailure(fileError(failure.code().value(), FileAccess::write, path).localizedDescription());
  }
}

}  // namespace ostra
