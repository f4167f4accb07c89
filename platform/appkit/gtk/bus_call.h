#pragma once
#include <memory>

#include <gio/gio.h>

namespace ostra::gtk {

struct VariantDeleter {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, VariantDeleter>;

/// Something on the session bus that can be called.
struct BusObject {
  GDBusConnection* bus;
  const char* name;
  const char* path;
  const char* interface;
};

/// Calls a method and waits for the answer, while windows live. Null when there was none within so many
/// milliseconds, or the wait was cancelled. Takes the parameters' floating reference.
Variant call(const BusObject& object, const char* method, GVariant* parameters, int milliseconds);

}  // namespace ostra::gtk
