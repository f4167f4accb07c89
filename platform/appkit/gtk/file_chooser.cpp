#include "platform/appkit/gtk/file_chooser.h"

#include "platform/appkit/gtk/main_loop.h"
#include "platform/appkit/gtk/object.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

constexpr int kMessageMargin = 12;

void showMessage(GtkDialog* dialog, const std::string& text) {
  GtkWidget* message = gtk_label_new(shownText(text).c_str());
  gtk_label_set_xalign(GTK_LABEL(message), 0);
  gtk_label_set_wrap(GTK_LABEL(message), TRUE);
  gtk_label_set_max_width_chars(GTK_LABEL(message), 1);
  gtk_widget_set_margin_start(message, kMessageMargin);
  gtk_widget_set_margin_end(message, kMessageMargin);
  gtk_widget_set_margin_top(message, kMessageMargin);
  gtk_widget_set_margin_bottom(message, kMessageMargin);
  gtk_box_prepend(GTK_BOX(gtk_dialog_get_content_area(dialog)), message);
}

void showFolder(GtkFileChooser* chooser, const std::optional<URL>& folder) {
  if (!folder) return;
  const auto file = ObjectRef<GFile>::adopting(g_file_new_for_path(folder->path().c_str()));
  gtk_file_chooser_set_current_folder(chooser, file.get(), nullptr);
}

void offerTypes(GtkFileChooser* chooser, const std::vector<UTType>& types) {
  for (const UTType& type : types) {
    const auto filter = ObjectRef<GtkFileFilter>::adopting(gtk_file_filter_new());
    gtk_file_filter_set_name(filter.get(), descriptionOf(type).c_str());
    for (const std::string& extension : type.filenameExtensions()) {
      gtk_file_filter_add_suffix(filter.get(), extension.c_str());
    }
    gtk_file_chooser_add_filter(chooser, filter.get());
  }
}

void apply(const NSSavePanel& panel, NSSavePanel::Setting setting, GtkWidget* dialog) {
  GtkFileChooser* chooser = GTK_FILE_CHOOSER(dialog);
  switch (setting) {
    case NSSavePanel::Setting::title:
      return gtk_window_set_title(GTK_WINDOW(dialog), shownText(panel.title()).c_str());
    case NSSavePanel::Setting::message:
      return showMessage(GTK_DIALOG(dialog), panel.message());
    case NSSavePanel::Setting::nameFieldStringValue:
      return gtk_file_chooser_set_current_name(chooser, shownText(panel.nameFieldStringValue()).c_str());
    case NSSavePanel::Setting::directoryURL:
      return showFolder(chooser, panel.directoryURL());
    case NSSavePanel::Setting::allowedContentTypes:
      return offerTypes(chooser, panel.allowedContentTypes());
    case NSSavePanel::Setting::canCreateDirectories:
      return gtk_file_chooser_set_create_folders(chooser, panel.canCreateDirectories() ? TRUE : FALSE);
  }
}

std::optional<std::string> pathIn(GtkFileChooser* chooser) {
  const auto file = ObjectRef<GFile>::adopting(gtk_file_chooser_get_file(chooser));
  const char* path = file ? g_file_peek_path(file.get()) : nullptr;
  return path == nullptr ? std::nullopt : std::optional<std::string>(path);
}

ObjectRef<GtkWidget> makeDialog(const NSSavePanel& panel, GtkWindow* parent) {
  ObjectRef<GtkWidget> dialog(
      GTK_WIDGET(g_object_new(GTK_TYPE_FILE_CHOOSER_DIALOG, "accessible-role", GTK_ACCESSIBLE_ROLE_DIALOG,
                              "action", GTK_FILE_CHOOSER_ACTION_SAVE, "use-header-bar", 1, nullptr)));
  gtk_window_set_transient_for(GTK_WINDOW(dialog.get()), parent);
  gtk_dialog_add_button(GTK_DIALOG(dialog.get()), "_Cancel", GTK_RESPONSE_CANCEL);
  gtk_dialog_add_button(GTK_DIALOG(dialog.get()), "_Save", GTK_RESPONSE_ACCEPT);
  gtk_dialog_set_default_response(GTK_DIALOG(dialog.get()), GTK_RESPONSE_ACCEPT);
  gtk_window_set_modal(GTK_WINDOW(dialog.get()), TRUE);
  gtk_file_chooser_set_create_folders(GTK_FILE_CHOOSER(dialog.get()), FALSE);  // as a panel starts
  for (const NSSavePanel::Setting setting : panel.settings()) apply(panel, setting, dialog.get());
  return dialog;
}

}  // namespace

std::string descriptionOf(const UTType& type) {
  const std::vector<std::string> mimeTypes = type.mimeTypes();
  if (mimeTypes.empty()) return type.identifier();
  char* contentType = g_content_type_from_mime_type(mimeTypes.front().c_str());
  char* description = g_content_type_get_description(contentType);
  std::string text = description;
  g_free(description);
  g_free(contentType);
  return text;
}

std::optional<std::string> chooseWithGtk(const NSSavePanel& panel, GtkWindow* parent) {
  const ObjectRef<GtkWidget> dialog = makeDialog(panel, parent);
  ModalRun run;
  int response = GTK_RESPONSE_NONE;
  g_signal_connect(
      dialog.get(), "response",
      G_CALLBACK(+[](GtkDialog*, int given, gpointer kept) { *static_cast<int*>(kept) = given; }), &response);
  onSignal(dialog.get(), "response", [&run] { run.end(); });
  gtk_window_present(GTK_WINDOW(dialog.get()));
  run.wait();
  const bool isAccepted = response == GTK_RESPONSE_ACCEPT && !run.isCancelled();
  auto path = isAccepted ? pathIn(GTK_FILE_CHOOSER(dialog.get())) : std::nullopt;
  gtk_window_destroy(GTK_WINDOW(dialog.get()));
  return path;
}

}  // namespace ostra::gtk
