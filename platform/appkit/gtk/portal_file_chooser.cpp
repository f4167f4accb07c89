#include "platform/appkit/gtk/portal_file_chooser.h"

#include "platform/appkit/gtk/bus_call.h"
#include "platform/appkit/gtk/file_chooser.h"
#include "platform/appkit/gtk/main_loop.h"
#include "platform/appkit/gtk/object.h"
#include "platform/appkit/gtk/surface_handle.h"
#include "platform/appkit/gtk/text.h"

namespace ostra::gtk {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kFileChooser = "org.freedesktop.portal.FileChooser";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
/// Long enough for a portal that has to be started first.
constexpr int kAnswerMilliseconds = 5000;

// How a request ended, in the portal's numbers. Others: the dialog failed.
constexpr guint kChosen = 0;
constexpr guint kCancelled = 1;

bool offersFileChooser(GDBusConnection* bus) {
  const BusObject properties{bus, kPortal, kPortalPath, "org.freedesktop.DBus.Properties"};
  return call(properties, "Get", g_variant_new("(ss)", kFileChooser, "version"), kAnswerMilliseconds) !=
         nullptr;
}

GVariant* filterOf(const UTType& type) {
  GVariantBuilder patterns;
  g_variant_builder_init(&patterns, G_VARIANT_TYPE("a(us)"));
  for (const std::string& extension : type.filenameExtensions()) {
    g_variant_builder_add(&patterns, "(us)", 0U, ("*." + extension).c_str());
  }
  return g_variant_new("(sa(us))", descriptionOf(type).c_str(), &patterns);
}

GVariant* filtersOf(const std::vector<UTType>& types) {
  GVariantBuilder filters;
  g_variant_builder_init(&filters, G_VARIANT_TYPE("a(sa(us))"));
  for (const UTType& type : types) g_variant_builder_add_value(&filters, filterOf(type));
  return g_variant_builder_end(&filters);
}

void add(GVariantBuilder& options, const char* key, GVariant* value) {
  g_variant_builder_add(&options, "{sv}", key, value);
}

void addSetting(GVariantBuilder& options, const NSSavePanel& panel, NSSavePanel::Setting setting) {
  switch (setting) {
    case NSSavePanel::Setting::nameFieldStringValue:
      return add(options, "current_name",
                 g_variant_new_string(shownText(panel.nameFieldStringValue()).c_str()));
    case NSSavePanel::Setting::directoryURL:
      if (panel.directoryURL()) {
        add(options, "current_folder", g_variant_new_bytestring(panel.directoryURL()->path().c_str()));
      }
      return;
    case NSSavePanel::Setting::allowedContentTypes:
      return add(options, "filters", filtersOf(panel.allowedContentTypes()));
    case NSSavePanel::Setting::title:    // an argument of the call
    case NSSavePanel::Setting::message:  // nowhere to show it
    case NSSavePanel::Setting::canCreateDirectories:
      return;
  }
}

/// One question to the portal. The answer comes as a signal, or never when the portal goes away.
class Request {
 public:
  explicit Request(GDBusConnection* bus) : bus_(bus), token_("ostra" + std::to_string(g_random_int())) {
    // Told before asking, so that no answer can be missed.
    const std::string sender = std::string(g_dbus_connection_get_unique_name(bus)).substr(1);
    path_ = std::string(kPortalPath) + "/request/" + sender + "/" + token_;
    for (char& c : path_) c = c == '.' ? '_' : c;
    answers_ = g_dbus_connection_signal_subscribe(bus, kPortal, kRequest, "Response", path_.c_str(), nullptr,
                                                  G_DBUS_SIGNAL_FLAGS_NONE, responded, this, nullptr);
    portal_ = g_bus_watch_name_on_connection(bus, kPortal, G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr, vanished,
                                             this, nullptr);
  }
  ~Request() {
    g_bus_unwatch_name(portal_);
    g_dbus_connection_signal_unsubscribe(bus_, answers_);
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;

  PortalAnswer ask(const NSSavePanel& panel, const std::string& parent) {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    add(options, "handle_token", g_variant_new_string(token_.c_str()));
    for (const NSSavePanel::Setting setting : panel.settings()) addSetting(options, panel, setting);
    const BusObject chooser{bus_, kPortal, kPortalPath, kFileChooser};
    const std::string title = shownText(panel.title());
    if (!call(chooser, "SaveFile", g_variant_new("(ssa{sv})", parent.c_str(), title.c_str(), &options),
              kAnswerMilliseconds)) {
      return {};
    }
    run_.wait();
    if (run_.isCancelled()) close();
    return answer_;
  }

 private:
  static void responded(GDBusConnection*, const char*, const char*, const char*, const char*,
                        GVariant* parameters, gpointer self) {
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ua{sv})"))) return;
    guint response = kCancelled;
    GVariant* results = nullptr;
    g_variant_get(parameters, "(u@a{sv})", &response, &results);
    static_cast<Request*>(self)->end(response, Variant(results).get());
  }

  static void vanished(GDBusConnection*, const char*, gpointer self) {
    static_cast<Request*>(self)->run_.end();
  }

  void end(guint response, GVariant* results) {
    answer_.wasAsked = response == kChosen || response == kCancelled;
    if (response == kChosen) answer_.path = firstPath(results);
    run_.end();
  }

  static std::optional<std::string> firstPath(GVariant* results) {
    const Variant places(g_variant_lookup_value(results, "uris", G_VARIANT_TYPE_STRING_ARRAY));
    if (!places || g_variant_n_children(places.get()) == 0) return std::nullopt;
    const Variant place(g_variant_get_child_value(places.get(), 0));
    char* path = g_filename_from_uri(g_variant_get_string(place.get(), nullptr), nullptr, nullptr);
    if (path == nullptr) return std::nullopt;
    std::string copy = path;
    g_free(path);
    return copy;
  }

  void close() const {
    g_dbus_connection_call(bus_, kPortal, path_.c_str(), kRequest, "Close", nullptr, nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
  }

  GDBusConnection* bus_;
  const std::string token_;
  std::string path_;
  guint answers_ = 0;
  guint portal_ = 0;
  ModalRun run_;
  PortalAnswer answer_;
};

}  // namespace

PortalAnswer chooseWithPortal(const NSSavePanel& panel, GtkWindow* parent) {
  const auto bus = ObjectRef<GDBusConnection>::adopting(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus) return {};
  const ModalRun all;  // a question that was cancelled halfway was asked
  PortalAnswer answer;
  if (offersFileChooser(bus.get())) {
    const SurfaceHandle handle(parent);
    answer = Request(bus.get()).ask(panel, handle.text());
  }
  return all.isCancelled() ? PortalAnswer{true, std::nullopt} : answer;
}

}  // namespace ostra::gtk
