#include "platform/appkit/gtk/pop_up.h"

#include <algorithm>

#include "platform/appkit/gtk/object.h"
#include "platform/appkit/gtk/pop_up_rows.h"
#include "platform/appkit/gtk/pop_up_search.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

bool sameItems(const std::vector<NSMenuItem>& a, const std::vector<NSMenuItem>& b) {
  return std::equal(
      a.begin(), a.end(), b.begin(), b.end(), [](const NSMenuItem& one, const NSMenuItem& other) {
        return one.title == other.title && one.tag == other.tag && one.isSeparator == other.isSeparator;
      });
}

/// Keeps a drop-down and a pop-up alike. The drop-down's list has the titles only: a separator is drawn by
/// the row after it.
class PopUpLink {
 public:
  PopUpLink(GtkDropDown* widget, const std::shared_ptr<NSPopUpButton>& popUp)
      : widget_(widget), popUp_(popUp) {}

  /// Pop-up to widget.
  void show() {
    const auto popUp = popUp_.lock();
    if (!popUp) return;
    showing_ = true;
    if (!built_ || !sameItems(shown_, popUp->items())) build(popUp->items());
    gtk_drop_down_set_selected(widget_, positionOf(popUp->selectedItem()));
    gtk_widget_set_sensitive(GTK_WIDGET(widget_), popUp->isEnabled() ? TRUE : FALSE);
    showing_ = false;
  }

  /// Widget to pop-up.
  void choose() {
    const auto popUp = popUp_.lock();
    const guint position = gtk_drop_down_get_selected(widget_);
    if (!popUp || showing_ || position >= tags_.size()) return;
    popUp->selectItemWithTag(tags_[position]);
  }

 private:
  void build(const std::vector<NSMenuItem>& items) {
    GListStore* titles = g_list_store_new(GTK_TYPE_STRING_OBJECT);
    tags_.clear();
    bool separated = false;
    for (const NSMenuItem& item : items) {
      if (!item.isSeparator) {
        const auto title =
            ObjectRef<GtkStringObject>::adopting(gtk_string_object_new(shownText(item.title).c_str()));
        if (separated) markFirstOfGroup(title.get());
        g_list_store_append(titles, title.get());
        tags_.push_back(item.tag);
      }
      separated = item.isSeparator;
    }
    gtk_drop_down_set_model(widget_, G_LIST_MODEL(titles));
    g_object_unref(titles);
    shown_ = items;
    built_ = true;
  }

  guint positionOf(const NSMenuItem* item) const {
    const auto found = item == nullptr ? tags_.end() : std::find(tags_.begin(), tags_.end(), item->tag);
    return found == tags_.end() ? GTK_INVALID_LIST_POSITION : static_cast<guint>(found - tags_.begin());
  }

  GtkDropDown* widget_;
  std::weak_ptr<NSPopUpButton> popUp_;
  std::vector<NSMenuItem> shown_;
  std::vector<int> tags_;
  bool built_ = false;
  bool showing_ = false;
};

}  // namespace

GtkWidget* makePopUp(const std::shared_ptr<NSPopUpButton>& popUp) {
  GtkExpression* title = gtk_property_expression_new(GTK_TYPE_STRING_OBJECT, nullptr, "string");
  const ObjectRef<GtkWidget> widget(gtk_drop_down_new(nullptr, title));
  GtkDropDown* dropDown = GTK_DROP_DOWN(widget.get());
  gtk_drop_down_set_enable_search(dropDown, TRUE);
  searchByTyping(dropDown);
  setRows(dropDown);
  const auto link = std::make_shared<PopUpLink>(dropDown, popUp);
  link->show();
  onSignal(dropDown, "notify::selected", [link] { link->choose(); });
  popUp->setObserver([widget, link] { link->show(); });
  return widget.get();
}

}  // namespace ostra::gtk
