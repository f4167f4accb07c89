#pragma once
#include <memory>

#include <glib-object.h>

namespace ostra::menu {

struct Freeing {
  void operator()(char* text) const { g_free(text); }
  void operator()(char** texts) const { g_strfreev(texts); }
  void operator()(GKeyFile* file) const { g_key_file_unref(file); }
  void operator()(GError* error) const { g_error_free(error); }
};
struct Unreferencing {
  void operator()(gpointer object) const { g_object_unref(object); }
};

/// What GLib gives to its caller, each by the way in which it wants it back.
using Text = std::unique_ptr<char, Freeing>;
using Texts = std::unique_ptr<char*, Freeing>;
using KeyFile = std::unique_ptr<GKeyFile, Freeing>;
using Error = std::unique_ptr<GError, Freeing>;
template <class T>
using Object = std::unique_ptr<T, Unreferencing>;

}  // namespace ostra::menu
