#include "platform/appkit/gtk/alert_window.h"

#include "platform/appkit/gtk/button.h"
#include "platform/appkit/gtk/close_with_escape.h"
#include "platform/appkit/gtk/main_loop.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

constexpr int kMargin = 20;
constexpr int kSpacing = 12;
constexpr double kHeadingScale = 1.15;
constexpr int kLeastWidth = 380;
constexpr int kLineCharacters = 56;
/// Longer texts are scrolled, so that the buttons stay on the smallest screen.
constexpr int kMostTextHeight = 320;

GtkWidget* makeText(const std::string& text) {
  GtkWidget* label = gtk_label_new(shownText(text).c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_max_width_chars(GTK_LABEL(label), kLineCharacters);
  return label;
}

GtkWidget* makeHeading(const NSAlert& alert) {
  GtkWidget* label = makeText(alert.messageText);
  PangoAttrList* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_weight_new(PANGO_WEIGHT_BOLD));
  pango_attr_list_insert(attributes, pango_attr_scale_new(kHeadingScale));
  gtk_label_set_attributes(GTK_LABEL(label), attributes);
  pango_attr_list_unref(attributes);
  return label;
}

GtkWidget* makeInformation(const NSAlert& alert) {
  GtkWidget* label = makeText(alert.informativeText);
  gtk_label_set_selectable(GTK_LABEL(label), TRUE);
  gtk_widget_set_valign(label, GTK_ALIGN_START);
  GtkWidget* scrolled = gtk_scrolled_window_new();
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scrolled), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_propagate_natural_width(GTK_SCROLLED_WINDOW(scrolled), TRUE);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scrolled), TRUE);
  gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scrolled), kMostTextHeight);
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scrolled), label);
  gtk_widget_set_vexpand(scrolled, TRUE);
  return scrolled;
}

/// One alert on the screen.
class AlertWindow {
 public:
  AlertWindow(const NSAlert& alert, GtkWindow* parent) : window_(makeWindow(alert, parent)) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, kSpacing);
    gtk_widget_set_margin_start(box, kMargin);
    gtk_widget_set_margin_end(box, kMargin);
    gtk_widget_set_margin_top(box, kSpacing);
    gtk_widget_set_margin_bottom(box, kMargin);
    gtk_widget_set_size_request(box, kLeastWidth, -1);
    gtk_box_append(GTK_BOX(box), makeHeading(alert));
    if (!alert.informativeText.empty()) gtk_box_append(GTK_BOX(box), makeInformation(alert));
    gtk_box_append(GTK_BOX(box), makeButtons(alert));
    gtk_window_set_child(window(), box);
    // Not the text, whose focus would mark all of it.
    if (default_ != nullptr) gtk_window_set_focus(window(), default_);
    dismissWithEscape();
  }
  ~AlertWindow() { gtk_window_destroy(window()); }
  AlertWindow(const AlertWindow&) = delete;
  AlertWindow& operator=(const AlertWindow&) = delete;

  std::size_t waitForAnswer() {
    gtk_window_present(window());
    run_.wait();
    return run_.isCancelled() ? last_ : pressed_;
  }

 private:
  GtkWindow* window() const { return window_.get(); }

  static ObjectRef<GtkWindow> makeWindow(const NSAlert& alert, GtkWindow* parent) {
    const std::string title = shownText(alert.messageText);
    ObjectRef<GtkWindow> window(GTK_WINDOW(
        g_object_new(GTK_TYPE_WINDOW, "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT_DIALOG, nullptr)));
    gtk_accessible_update_property(GTK_ACCESSIBLE(window.get()), GTK_ACCESSIBLE_PROPERTY_LABEL, title.c_str(),
                                   -1);
    gtk_window_set_title(window.get(), title.c_str());
    gtk_window_set_resizable(window.get(), FALSE);
    gtk_window_set_modal(window.get(), TRUE);
    gtk_window_set_transient_for(window.get(), parent);
    // No bar over the heading, which says it already; the title is for the list of windows.
    gtk_window_set_titlebar(window.get(), gtk_window_handle_new());
    gtk_widget_add_css_class(GTK_WIDGET(window.get()), "dialog");
    gtk_widget_add_css_class(GTK_WIDGET(window.get()), "message");
    return window;
  }

  GtkWidget* makeButtons(const NSAlert& alert) {
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kSpacing / 2);
    gtk_widget_set_halign(row, GTK_ALIGN_END);
    for (const std::string& title : alert.buttons) {
      GtkWidget* button = makePushButton(shownText(title).c_str());
      const auto position = static_cast<std::size_t>(&title - alert.buttons.data());
      onSignal(button, "clicked", [this, position] { press(position); });
      // The first is the default, at the trailing end.
      gtk_box_prepend(GTK_BOX(row), button);
      if (position == 0) makeDefault(button);
    }
    last_ = alert.buttons.empty() ? 0 : alert.buttons.size() - 1;
    pressed_ = last_;
    return row;
  }

  void makeDefault(GtkWidget* button) {
    gtk_widget_add_css_class(button, "suggested-action");
    gtk_window_set_default_widget(window(), button);
    default_ = button;
  }

  void press(std::size_t position) {
    pressed_ = position;
    run_.end();
  }

  void dismissWithEscape() {
    onQuestion(window(), "close-request", [this] {
      press(last_);
      return true;
    });
    closeWithEscape(window());
  }

  const ObjectRef<GtkWindow> window_;
  ModalRun run_;
  GtkWidget* default_ = nullptr;
  std::size_t last_ = 0;
  std::size_t pressed_ = 0;
};

}  // namespace

std::size_t runAlert(const NSAlert& alert, GtkWindow* parent) {
  return AlertWindow(alert, parent).waitForAnswer();
}

}  // namespace ostra::gtk
