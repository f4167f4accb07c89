#pragma once
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

#include <sys/types.h>

namespace ostra::test {

/// Ends a program that hangs, so that a test fails instead of waiting for ever.
class Watchdog {
 public:
  Watchdog(pid_t program, std::chrono::seconds patience)
      : thread_([this, program, patience] { watch(program, patience); }) {}
  ~Watchdog() {
    {
      const std::lock_guard lock(mutex_);
      over_ = true;
    }
    ended_.notify_one();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  void watch(pid_t program, std::chrono::seconds patience) {
    std::unique_lock lock(mutex_);
    if (!ended_.wait_for(lock, patience, [this] { return over_; })) kill(program, SIGABRT);
  }

  std::mutex mutex_;
  std::condition_variable ended_;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace ostra::test
