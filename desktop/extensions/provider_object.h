#pragma once
#include <glib-object.h>

namespace ostra::menu {

/// The object that a file manager makes of an extension. All that it can do is in the interface that it
/// implements.
struct ProviderObject {
  GObject parent;
};
struct ProviderObjectClass {
  GObjectClass parent;
};

inline constexpr GTypeInfo kProviderInfo{.class_size = sizeof(ProviderObjectClass),
                                         .base_init = nullptr,
                                         .base_finalize = nullptr,
                                         .class_init = nullptr,
                                         .class_finalize = nullptr,
                                         .class_data = nullptr,
                                         .instance_size = sizeof(ProviderObject),
                                         .n_preallocs = 0,
                                         .instance_init = nullptr,
                                         .value_table = nullptr};

}  // namespace ostra::menu
