#include "platform/appkit/gtk/presented_window.h"

#include <algorithm>
#include <cmath>

#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

/// The panels' own, in line with which the progress stands.
constexpr int kProgressMargin = 20;

/// A dialog of its own: what it holds is arranged by its views alone.
GtkWindow* makeWindow(const std::string& title) {
  const std::string shown = shownText(title);
  auto* window =
      GTK_WINDOW(g_object_new(GTK_TYPE_WINDOW, "accessible-role", GTK_ACCESSIBLE_ROLE_DIALOG, nullptr));
  gtk_accessible_update_property(GTK_ACCESSIBLE(window), GTK_ACCESSIBLE_PROPERTY_LABEL, shown.c_str(), -1);
  gtk_window_set_title(window, shown.c_str());
  gtk_window_set_titlebar(window, gtk_header_bar_new());
  gtk_window_set_resizable(window, FALSE);
  return window;
}

/// How large the user's text is beside the one that sizes are given for, the desktops' usual 11 points at 96
/// dots per inch. Never less than 1.
double textScale(GtkWidget* widget) {
  constexpr double kUsualPixels = 11.0 * 96 / 72;
  PangoContext* context = gtk_widget_get_pango_context(widget);
  const PangoFontDescription* font = pango_context_get_font_description(context);
  const double size = static_cast<double>(pango_font_description_get_size(font)) / PANGO_SCALE;
  const bool isPixels = pango_font_description_get_size_is_absolute(font) == TRUE;
  const double pixels = isPixels ? size : size * pango_cairo_context_get_resolution(context) / 72;
  return std::clamp(pixels / kUsualPixels, 1.0, 3.0);
}

/// The character that a key types, as key equivalents name it.
std::string characterOf(guint key) {
  if (key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter) return kReturnKey;
  if (key == GDK_KEY_Escape) return kEscapeKey;
  char text[6];
  return {text, static_cast<std::size_t>(g_unichar_to_utf8(gdk_keyval_to_unicode(key), text))};
}

bool isInOpenList(GtkWidget* widget) {
  GtkWidget* list = gtk_widget_get_ancestor(widget, GTK_TYPE_POPOVER);
  return list != nullptr && gtk_widget_get_visible(list) == TRUE;
}

/// Whether the focus has a use of its own for a key: an open list for all of them, a push button for Return.
bool focusTakes(GtkWindow* window, const std::string& character) {
  GtkWidget* focus = gtk_window_get_focus(window);
  if (focus == nullptr) return false;
  if (isInOpenList(focus)) return true;
  return GTK_IS_BUTTON(focus) && !GTK_IS_TOGGLE_BUTTON(focus) && character == kReturnKey;
}

}  // namespace

PresentedWindow::PresentedWindow(std::shared_ptr<NSViewController> controller, const std::string& title)
    : controller_(std::move(controller)),
      views_(controller_->view()),
      content_(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0)),
      window_(makeWindow(title)) {
  gtk_box_append(GTK_BOX(content_.get()), views_.root());
  gtk_window_set_child(window(), content_.get());
  setSize();
  setKeys();
  onQuestion(window(), "close-request", [this] {
    close();
    return true;
  });
  gtk_window_present(window());
}

PresentedWindow::~PresentedWindow() { gtk_window_destroy(window()); }

bool PresentedWindow::isVisible() const { return gtk_widget_get_visible(GTK_WIDGET(window())) == TRUE; }

void PresentedWindow::hide() { gtk_widget_set_visible(GTK_WIDGET(window()), FALSE); }

void PresentedWindow::showProgress(const Progress& progress) {
  if (!progress_) {
    progress_ = std::make_unique<ProgressView>();
    gtk_widget_set_margin_start(progress_->root(), kProgressMargin);
    gtk_widget_set_margin_end(progress_->root(), kProgressMargin);
    gtk_widget_set_margin_bottom(progress_->root(), kProgressMargin);
    gtk_box_append(GTK_BOX(content_.get()), progress_->root());
  }
  progress_->show(progress);
}

void PresentedWindow::endProgress() {
  if (progress_) gtk_box_remove(GTK_BOX(content_.get()), progress_->root());
  progress_.reset();
}

void PresentedWindow::setSize() const {
  const CGSize size = controller_->preferredContentSize();
  const double scale = textScale(views_.root());
  gtk_widget_set_size_request(views_.root(), static_cast<int>(std::lround(size.width * scale)),
                              static_cast<int>(std::lround(size.height)));
}

void PresentedWindow::setKeys() {
  if (const auto button = views_.buttonOf(kReturnKey)) {
    gtk_window_set_default_widget(window(), views_.widgetOf(*button));
  }
  // Before the focus gets them: it has a use for Return itself.
  GtkEventController* keys = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
  g_signal_connect(keys, "key-pressed",
                   G_CALLBACK(+[](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers,
                                  gpointer self) -> gboolean {
                     return static_cast<PresentedWindow*>(self)->press(key, modifiers) ? TRUE : FALSE;
                   }),
                   this);
  gtk_widget_add_controller(GTK_WIDGET(window()), keys);
}

bool PresentedWindow::press(guint key, GdkModifierType modifiers) const {
  if ((modifiers & (GDK_CONTROL_MASK | GDK_ALT_MASK | GDK_SUPER_MASK)) != 0) return false;
  const std::string character = characterOf(key);
  const auto button = views_.buttonOf(character);
  if (!button || !button->isEnabled() || focusTakes(window(), character)) return false;
  button->performClick();
  return true;
}

void PresentedWindow::close() {
  const auto button = views_.buttonOf(kEscapeKey);
  if (button && button->isEnabled()) return button->performClick();
  hide();
}

}  // namespace ostra::gtk
