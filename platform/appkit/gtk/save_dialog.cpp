#include "platform/appkit/gtk/save_dialog.h"

#include <filesystem>

#include "platform/appkit/gtk/alert_window.h"
#include "platform/appkit/gtk/file_chooser.h"
#include "platform/appkit/gtk/portal_file_chooser.h"
#include "platform/appkit/save_place.h"

namespace ostra::gtk {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> chosenPath(const NSSavePanel& panel, GtkWindow* parent) {
  const PortalAnswer answer = chooseWithPortal(panel, parent);
  return answer.wasAsked ? answer.path : chooseWithGtk(panel, parent);
}

/// The dialogs ask before a name is taken that they know; an extension that we add makes another.
bool mayBeTaken(const std::string& path, const std::string& asked, GtkWindow* parent) {
  std::error_code ignored;
  if (path == asked || !fs::exists(fs::symlink_status(path, ignored))) return true;
  NSAlert question;
  question.messageText = "“" + fs::path(path).filename().string() + "” exists. Replace it?";
  question.informativeText = "It is in “" + fs::path(path).parent_path().string() + "”.";
  question.buttons = {"Replace", "Cancel"};
  return runAlert(question, parent) == 0;
}

}  // namespace

std::optional<URL> askWhereToSave(const NSSavePanel& panel, GtkWindow* parent) {
  for (;;) {
    const auto chosen = chosenPath(panel, parent);
    if (!chosen) return std::nullopt;
    const std::string path = placeOfAllowedType(panel, *chosen);
    if (mayBeTaken(path, *chosen, parent)) return URL::fileURLWithPath(path);
  }
}

}  // namespace ostra::gtk
