#include "platform/appkit/gtk/bus_call.h"

#include "platform/appkit/gtk/main_loop.h"

namespace ostra::gtk {
namespace {

/// Kept by who waits and by the call, which may come back after the wait was cancelled.
struct Pending {
  Variant answer;
  ModalRun* waiting = nullptr;
};

void answered(GObject* bus, GAsyncResult* result, gpointer kept) {
  const std::unique_ptr<std::shared_ptr<Pending>> pending(static_cast<std::shared_ptr<Pending>*>(kept));
  (*pending)->answer.reset(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
  if ((*pending)->waiting != nullptr) (*pending)->waiting->end();
}

}  // namespace

Variant call(const BusObject& object, const char* method, GVariant* parameters, int milliseconds) {
  ModalRun run;
  const auto pending = std::make_shared<Pending>();
  pending->waiting = &run;
  g_dbus_connection_call(object.bus, object.name, object.path, object.interface, method, parameters, nullptr,
                         G_DBUS_CALL_FLAGS_NONE, milliseconds, nullptr, answered,
                         new std::shared_ptr(pending));
  run.wait();
  pending->waiting = nullptr;
  return std::move(pending->answer);
}

}  // namespace ostra::gtk
