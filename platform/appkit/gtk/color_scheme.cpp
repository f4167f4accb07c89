#include "platform/appkit/gtk/color_scheme.h"

#include <gtk/gtk.h>

#include "platform/appkit/gtk/object.h"

namespace ostra::gtk {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kPortalSettings = "org.freedesktop.portal.Settings";
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kColorScheme = "color-scheme";
constexpr const char* kInterfaceSchema = "org.gnome.desktop.interface";

/// The values are the portal's and the desktop's alike: 0 no wish, 1 dark, 2 light. Without a wish GTK's own
/// setting stays.
void apply(guint scheme) {
  if (scheme != 1 && scheme != 2) return;
  g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", scheme == 1 ? TRUE : FALSE,
               nullptr);
}

/// The value, however many variants it is wrapped in: the portal's two ways of telling differ in that.
void applyVariant(GVariant* value) {
  GVariant* inner = g_variant_ref(value);
  while (g_variant_is_of_type(inner, G_VARIANT_TYPE_VARIANT)) {
    GVariant* next = g_variant_get_variant(inner);
    g_variant_unref(inner);
    inner = next;
  }
  if (g_variant_is_of_type(inner, G_VARIANT_TYPE_UINT32)) apply(g_variant_get_uint32(inner));
  g_variant_unref(inner);
}

/// Known at once, before the first frame.
void followDesktopSettings() {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  GSettingsSchema* schema =
      source == nullptr ? nullptr : g_settings_schema_source_lookup(source, kInterfaceSchema, TRUE);
  if (schema == nullptr) return;
  if (g_settings_schema_has_key(schema, kColorScheme) == TRUE) {
    GSettings* settings = g_settings_new(kInterfaceSchema);  // kept for the process
    apply(static_cast<guint>(g_settings_get_enum(settings, kColorScheme)));
    onSignal(settings, "changed::color-scheme",
             [settings] { apply(static_cast<guint>(g_settings_get_enum(settings, kColorScheme))); });
  }
  g_settings_schema_unref(schema);
}

void changed(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* parameters,
             gpointer) {
  if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)"))) return;
  const char* group = nullptr;
  const char* key = nullptr;
  GVariant* value = nullptr;
  g_variant_get(parameters, "(&s&sv)", &group, &key, &value);
  if (g_str_equal(group, kAppearance) && g_str_equal(key, kColorScheme)) applyVariant(value);
  g_variant_unref(value);
}

void answered(GObject* connection, GAsyncResult* result, gpointer) {
  GVariant* answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr);
  if (answer == nullptr) return;
  GVariant* value = g_variant_get_child_value(answer, 0);
  applyVariant(value);
  g_variant_unref(value);
  g_variant_unref(answer);
}

/// The word of every desktop, but it may take its time: nothing waits for it.
void followPortal(GObject*, GAsyncResult* result, gpointer) {
  GDBusConnection* bus = g_bus_get_finish(result, nullptr);  // kept for the process
  if (bus == nullptr) return;
  g_dbus_connection_signal_subscribe(bus, kPortal, kPortalSettings, "SettingChanged", kPortalPath,
                                     kAppearance, G_DBUS_SIGNAL_FLAGS_NONE, changed, nullptr, nullptr);
  g_dbus_connection_call(bus, kPortal, kPortalPath, kPortalSettings, "Read",
                         g_variant_new("(ss)", kAppearance, kColorScheme), G_VARIANT_TYPE("(v)"),
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, answered, nullptr);
}

}  // namespace

void followColorScheme() {
  followDesktopSettings();
  g_bus_get(G_BUS_TYPE_SESSION, nullptr, followPortal, nullptr);
}

}  // namespace ostra::gtk
