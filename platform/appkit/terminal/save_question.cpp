#include "platform/appkit/terminal/save_question.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/appkit/save_place.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

std::string proposal(const NSSavePanel& panel) {
  if (!panel.directoryURL()) return panel.nameFieldStringValue();
  return panel.directoryURL()->appendingPathComponent(panel.nameFieldStringValue()).path();
}

std::string withHome(const std::string& path) {
  const char* home = std::getenv("HOME");
  if (home == nullptr || (path != "~" && path.rfind("~/", 0) != 0)) return path;
  return home + path.substr(1);
}

bool isFolder(const std::string& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool isThere(const std::string& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored));
}

/// The file that an answer names: in a folder under the proposed name, and of an allowed type, whose
/// extension is put after a name that has another.
std::string fileFor(const NSSavePanel& panel, const std::string& answer) {
  fs::path file = answer.empty() ? proposal(panel) : withHome(answer);
  if (isFolder(file) || !file.has_filename()) file /= panel.nameFieldStringValue();
  std::error_code ignored;
  return placeOfAllowedType(panel, fs::absolute(file, ignored).string());
}

bool saysYes(const Ask& ask, const std::string& question) {
  const auto answer = ask(question + " [y/N] ");
  return answer && !answer->empty() && (answer->front() == 'y' || answer->front() == 'Y');
}

bool makeFolder(const NSSavePanel& panel, const std::string& folder, const Ask& ask) {
  if (isFolder(folder)) return true;
  if (!panel.canCreateDirectories()) return false;
  if (!saysYes(ask, "There is no folder “" + folder + "”. Make it?")) return false;
  std::error_code failure;
  fs::create_directories(folder, failure);
  return isFolder(folder);
}

bool mayBeSaved(const NSSavePanel& panel, const std::string& file, const Ask& ask) {
  if (!makeFolder(panel, fs::path(file).parent_path(), ask)) return false;
  return !isThere(file) || saysYes(ask, "“" + file + "” exists. Replace it?");
}

}  // namespace

std::optional<URL> askWhereToSave(const NSSavePanel& panel, const Ask& ask) {
  std::string question = panel.title() + "\n" + panel.message() + "\n";
  for (;;) {
    question += "Save as [" + proposal(panel) + "]: ";
    const auto answer = ask(question);
    if (!answer) return std::nullopt;
    const std::string file = fileFor(panel, *answer);
    if (!isFolder(file) && mayBeSaved(panel, file, ask)) return URL::fileURLWithPath(file);
    question = "Not saved as “" + file + "”.\n";
  }
}

}  // namespace ostra
