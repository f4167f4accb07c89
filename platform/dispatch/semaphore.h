#pragma once
#include <condition_variable>
#include <mutex>

namespace ostra {

/// A counting semaphore. What happened before a signal is seen after the wait that it ended.
class DispatchSemaphore {
 public:
  explicit DispatchSemaphore(int value) : value_(value) {}
  void signal();
  /// Without a time limit.
  void wait();

 private:
  std::mutex mutex_;
  std::condition_variable raised_;
  int value_;
};

}  // namespace ostra
