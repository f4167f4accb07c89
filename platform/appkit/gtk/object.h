#pragma once
#include <functional>
#include <utility>

#include <gtk/gtk.h>

namespace ostra::gtk {

/// A counted reference to one of GLib's objects.
template <class T>
class ObjectRef {
 public:
  ObjectRef() = default;
  /// Takes a reference of its own, a floating one first.
  explicit ObjectRef(T* object) : object_(object) {
    if (object_ != nullptr) g_object_ref_sink(object_);
  }
  /// Takes over the caller's reference.
  static ObjectRef adopting(T* object) {
    ObjectRef reference;
    reference.object_ = object;
    return reference;
  }
  ObjectRef(const ObjectRef& other) : ObjectRef(other.object_) {}
  ObjectRef(ObjectRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ObjectRef& operator=(ObjectRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ObjectRef() {
    if (object_ != nullptr) g_object_unref(object_);
  }

  T* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

/// Calls `handler` whenever the object emits the signal, for as long as the object lives.
void onSignal(gpointer object, const char* signal, std::function<void()> handler);

/// The same for a signal that asks; true: the handler has dealt with it, and nobody else is asked.
void onQuestion(gpointer object, const char* signal, std::function<bool()> handler);

}  // namespace ostra::gtk
