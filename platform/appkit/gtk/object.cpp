#include "platform/appkit/gtk/object.h"

namespace ostra::gtk {
namespace {

void connect(gpointer object, const char* signal, std::function<bool()> handler) {
  auto* kept = new std::function<bool()>(std::move(handler));
  GClosure* closure = g_closure_new_simple(sizeof(GClosure), kept);
  g_closure_add_finalize_notifier(
      closure, kept, [](gpointer data, GClosure*) { delete static_cast<std::function<bool()>*>(data); });
  g_closure_set_marshal(closure,
                        [](GClosure* called, GValue* result, guint, const GValue*, gpointer, gpointer) {
                          const bool dealtWith = (*static_cast<std::function<bool()>*>(called->data))();
                          if (result != nullptr) g_value_set_boolean(result, dealtWith ? TRUE : FALSE);
                        });
  g_signal_connect_closure(object, signal, closure, FALSE);
}

}  // namespace

void onSignal(gpointer object, const char* signal, std::function<void()> handler) {
  connect(object, signal, [handler = std::move(handler)] {
    handler();
    return false;
  });
}

void onQuestion(gpointer object, const char* signal, std::function<bool()> handler) {
  connect(object, signal, std::move(handler));
}

}  // namespace ostra::gtk
