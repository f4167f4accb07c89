#include <condition_variable>
#include <csignal>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

#include "platform/dispatch/queue.h"
#include "platform/dispatch/semaphore.h"

namespace ostra {
namespace {

// Blocks may wait for one another (a batch waits for the provider that converts for it), so the bound is far
// above the number of processors; threads are made only when nobody is free.
constexpr std::size_t kMostThreads = 64;

/// Keeps signals on the main thread: a system call of a worker is never cut short by one. Faults stay
/// deliverable.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
      sigdelset(&all, fault);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

/// Background threads, made on demand and kept. They are detached, and the pool is never destroyed: a block
/// that waits for something that will not come must not hold up the end of the process.
class GlobalQueue : public DispatchQueue {
 public:
  void async(std::function<void()> block) override {
    const std::lock_guard lock(mutex_);
    blocks_.push_back(std::move(block));
    if (idle_ >= blocks_.size() || threads_ == kMostThreads) {
      work_.notify_one();
      return;
    }
    startThread();
  }

  void sync(const std::function<void()>& block) override {
    DispatchSemaphore done(0);
    async([&block, &done] {
      block();
      done.signal();
    });
    done.wait();
  }

 private:
  void startThread() {
    try {
      const SignalsBlocked blocked;  // the new thread inherits the mask
      std::thread([this] { serve(); }).detach();
      ++threads_;
    } catch (const std::exception&) {
      // With a thread left the block waits for it; with none it would never run.
      if (threads_ > 0) return;
      blocks_.pop_back();
      throw;
    }
  }

  [[noreturn]] void serve() noexcept {
    for (;;) {
      const std::function<void()> block = next();
      block();
    }
  }

  std::function<void()> next() {
    std::unique_lock lock(mutex_);
    ++idle_;
    work_.wait(lock, [this] { return !blocks_.empty(); });
    --idle_;
    std::function<void()> block = std::move(blocks_.front());
    blocks_.pop_front();
    return block;
  }

  std::mutex mutex_;
  std::condition_variable work_;
  std::deque<std::function<void()>> blocks_;
  std::size_t idle_ = 0;
  std::size_t threads_ = 0;
};

}  // namespace

DispatchQueue& globalQueue(QualityOfService) {
  static GlobalQueue* const queue = new GlobalQueue;
  return *queue;
}

}  // namespace ostra
