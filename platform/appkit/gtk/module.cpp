#include <clocale>
#include <cstring>
#include <string>

#include "platform/appkit/gtk/color_scheme.h"
#include "platform/appkit/gtk/gtk_renderer.h"
#include "platform/appkit/gtk/main_loop.h"
#include "platform/appkit/window_renderer_module.h"

namespace ostra::gtk {
namespace {

/// The user's language, and nothing else of the user's locale: numbers in files are not written in it, and
/// codecs are at work in the same process.
void setLocale() {
  std::setlocale(LC_CTYPE, "");
  std::setlocale(LC_MESSAGES, "");
  std::setlocale(LC_TIME, "");
  gtk_disable_setlocale();
}

void nameProgram() {
  g_set_prgname(kApplicationIdentifier);
  g_set_application_name("Ostra");
}

/// What GTK remarks on is for those who write windows; whoever uses them reads its warnings at most.
void silenceRemarks() {
  g_log_set_writer_func(
      [](GLogLevelFlags level, const GLogField* fields, gsize count, gpointer) {
        if ((level & (G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG)) != 0)
          return G_LOG_WRITER_HANDLED;
        return g_log_writer_default(level, fields, count, nullptr);
      },
      nullptr, nullptr);
}

Renderer* start(std::string& reason) {
  setLocale();
  nameProgram();
  silenceRemarks();
  if (gtk_init_check() == FALSE) {
    reason = "There is no display to show windows on.";
    return nullptr;
  }
  followColorScheme();
  attachMainQueue();
  static auto* const renderer = new GtkRenderer;  // GTK does not end before the process does
  return renderer;
}

}  // namespace
}  // namespace ostra::gtk

ostra::Renderer* ostra_window_renderer(const char* version, std::string* reason) {
  if (std::strcmp(version, OSTRA_VERSION) == 0) return ostra::gtk::start(*reason);
  *reason = "The module that shows windows is of version " OSTRA_VERSION ".";
  return nullptr;
}
