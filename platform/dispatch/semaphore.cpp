#include "platform/dispatch/semaphore.h"

namespace ostra {

void DispatchSemaphore::signal() {
  // Notified under the lock: the waiter may destroy the semaphore as soon as it wakes.
  std::lock_guard lock(mutex_);
  ++value_;
  raised_.notify_one();
}

void DispatchSemaphore::wait() {
  std::unique_lock lock(mutex_);
  raised_.wait(lock, [this] { return value_ > 0; });
  --value_;
}

}  // namespace ostra
