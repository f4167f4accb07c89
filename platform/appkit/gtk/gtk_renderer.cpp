#include "platform/appkit/gtk/gtk_renderer.h"

#include "platform/appkit/gtk/alert_window.h"
#include "platform/appkit/gtk/main_loop.h"
#include "platform/appkit/gtk/notification.h"
#include "platform/appkit/gtk/save_dialog.h"

namespace ostra::gtk {

GtkWindow* GtkRenderer::visibleWindow() const {
  if (presented_ && presented_->isVisible()) return presented_->window();
  return progress_ && progress_->isVisible() ? progress_->window() : nullptr;
}

void GtkRenderer::activate() {
  if (GtkWindow* window = visibleWindow()) gtk_window_present(window);
}

void GtkRenderer::beep() { gdk_display_beep(gdk_display_get_default()); }

void GtkRenderer::run(const NSAlert& alert) {
  alerted_ = true;
  endProgress();
  runAlert(alert, visibleWindow());
}

SavePanelAnswer GtkRenderer::run(const NSSavePanel& panel) {
  const auto url = askWhereToSave(panel, visibleWindow());
  return url ? SavePanelAnswer{NSModalResponseOK, url} : SavePanelAnswer{};
}

bool GtkRenderer::present(const std::shared_ptr<NSViewController>& controller, const std::string& title) {
  presented_ = std::make_unique<PresentedWindow>(controller, title);
  return true;
}

void GtkRenderer::withdraw() {
  // Not at once where the caller is on the main thread: it may stand inside what is to end.
  g_idle_add_full(
      G_PRIORITY_HIGH,
      [](gpointer self) -> gboolean {
        const auto* renderer = static_cast<GtkRenderer*>(self);
        ModalRun::cancelAll();
        if (renderer->presented_) renderer->presented_->hide();
        if (renderer->progress_) renderer->progress_->hide();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
}

bool GtkRenderer::progress(const Progress& progress) {
  const bool isSeen = (!presented_ && !progress_) || visibleWindow() != nullptr;
  if (progress.done >= progress.total || alerted_) {
    endProgress();
  } else if (isSeen) {
    showProgress(progress);
  }
  return isSeen;
}

void GtkRenderer::showProgress(const Progress& progress) {
  if (presented_) return presented_->showProgress(progress);
  if (progress_) return progress_->show(progress);
  progress_ = std::make_unique<ProgressWindow>(progress);
}

void GtkRenderer::endProgress() {
  if (presented_) presented_->endProgress();
  progress_.reset();
}

void GtkRenderer::notify(const std::string& title, const std::string& text) { sendNotification(title, text); }

}  // namespace ostra::gtk
