#pragma once
#include <atomic>

namespace ostra {

/// A process-wide service with a replaceable implementation.
///
/// `T` is an interface with a static `T& standard()`, the real implementation. Whoever needs the service asks
/// for `Service<T>::current()`; a test puts another in its place for a scope:
///
///     Service<NSFileManager>::Override override(recorder);
///
/// Overrides nest, innermost wins. They are seen by every thread at once: make and end them while no other
/// thread uses the service. The override refers to the object, which must outlive it.
template <class T>
class Service {
 public:
  static T& current() {
    T* replacement = replacement_.load(std::memory_order_acquire);
    return replacement != nullptr ? *replacement : T::standard();
  }

  class Override {
   public:
    explicit Override(T& replacement) : previous_(replacement_.exchange(&replacement)) {}
    ~Override() { replacement_.store(previous_, std::memory_order_release); }
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;

   private:
    T* previous_;
  };

 private:
  inline static std::atomic<T*> replacement_{nullptr};
};

}  // namespace ostra
