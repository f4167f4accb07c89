#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"
#include "platform/dispatch/semaphore.h"

namespace ostra {
namespace {

/// The blocks that wait for the main thread. What there is to do stands behind the mutex. The event
/// descriptor is for another loop that watches it; our own waits on the condition, which no failing call can
/// silence.
class MainQueue : public DispatchQueue {
 public:
  MainQueue() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (event_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  }

  void async(std::function<void()> block) override {
    const std::lock_guard lock(mutex_);
    blocks_.push_back(std::move(block));
    raise();
  }

  void sync(const std::function<void()>& block) override {
    DispatchSemaphore done(0);
    async([&block, &done] {
      block();
      done.signal();
    });
    done.wait();
  }

  void run() {
    while (!takeStop()) {
      if (!runOne()) wait();
    }
  }

  void setWaiting(std::function<void()> turn) { turnOfAnotherLoop_ = std::move(turn); }

  void stop() {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    raise();
  }

  void drain() {
    lower();  // in the middle of a block too, where nothing may run: else a modal loop would spin on it
    // Only what is there now: a block that always queues its successor must not keep another loop's turn for
    // ever.
    for (std::size_t left = waiting(); left > 0; --left) {
      if (!runOne()) break;
    }
  }

  int descriptor() const { return event_; }

 private:
  std::size_t waiting() {
    const std::lock_guard lock(mutex_);
    return blocks_.size();
  }

  bool takeStop() {
    const std::lock_guard lock(mutex_);
    if (stopped_ && !blocks_.empty()) raise();  // what is left is for the next who turns the queue
    return std::exchange(stopped_, false);
  }

  /// False when there was nothing to run, or a block is already running.
  bool runOne() {
    std::function<void()> block;
    {
      const std::lock_guard lock(mutex_);
      if (running_ || blocks_.empty()) return false;
      block = std::move(blocks_.front());
      blocks_.pop_front();
      running_ = true;
    }
    call(block);
    block = nullptr;  // what it holds goes before the next block starts, on this thread
    const std::lock_guard lock(mutex_);
    running_ = false;
    if (!blocks_.empty()) raise();
    return true;
  }

  /// A block that throws ends the process here, where the trace still shows it.
  static void call(const std::function<void()>& block) noexcept { block(); }

  void wait() {
    if (turnOfAnotherLoop_) return waitInAnotherLoop();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return stopped_ || (!running_ && !blocks_.empty()); });
  }

  void waitInAnotherLoop() {
    const std::function<void()> turn = turnOfAnotherLoop_;  // a turn may end with another way to wait
    turn();
    lower();
  }

  void raise() {
    changed_.notify_all();
    const eventfd_t one = 1;
    [[maybe_unused]] const int full = eventfd_write(event_, one);
  }

  void lower() const {
    eventfd_t count = 0;
    [[maybe_unused]] const int empty = eventfd_read(event_, &count);
  }

  const int event_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> blocks_;
  bool running_ = false;
  bool stopped_ = false;
  std::function<void()> turnOfAnotherLoop_;  // of the main thread
};

/// Never destroyed: a background thread may still queue a block while the process ends.
MainQueue& theMainQueue() {
  static MainQueue* const queue = new MainQueue;
  return *queue;
}

}  // namespace

DispatchQueue& mainQueue() { return theMainQueue(); }

bool isMainThread() { return gettid() == getpid(); }

void MainLoop::run() { theMainQueue().run(); }
void MainLoop::stop() { theMainQueue().stop(); }
void MainLoop::drain() { theMainQueue().drain(); }
int MainLoop::descriptor() { return theMainQueue().descriptor(); }
void MainLoop::setWaiting(std::function<void()> turn) { theMainQueue().setWaiting(std::move(turn)); }

}  // namespace ostra
