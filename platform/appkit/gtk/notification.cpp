#include "platform/appkit/gtk/notification.h"

#include "platform/appkit/gtk/bus_call.h"
#include "platform/appkit/gtk/object.h"
#include "platform/appkit/gtk/text.h"
#include "platform/appkit/window_renderer_module.h"

namespace ostra::gtk {
namespace {

/// Long enough for a service that has to be started first.
constexpr int kAnswerMilliseconds = 5000;
constexpr gint32 kDesktopsOwnTime = -1;

std::string markupOf(const std::string& text) {
  char* escaped = g_markup_escape_text(shownText(text).c_str(), -1);
  std::string markup = escaped;
  g_free(escaped);
  return markup;
}

GVariant* hints() {
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(kApplicationIdentifier));
  g_variant_builder_add(&hints, "{sv}", "suppress-sound", g_variant_new_boolean(TRUE));
  return g_variant_builder_end(&hints);
}

}  // namespace

void sendNotification(const std::string& title, const std::string& text) {
  const auto bus = ObjectRef<GDBusConnection>::adopting(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus) return;
  const BusObject notifications{bus.get(), "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                                "org.freedesktop.Notifications"};
  constexpr guint32 kReplacesNone = 0;
  GVariant* parameters =
      g_variant_new("(susss@as@a{sv}i)", g_get_application_name(), kReplacesNone, kApplicationIdentifier,
                    shownText(title).c_str(), markupOf(text).c_str(), g_variant_new_strv(nullptr, 0), hints(),
                    kDesktopsOwnTime);
  call(notifications, "Notify", parameters, kAnswerMilliseconds);
}

}  // namespace ostra::gtk
