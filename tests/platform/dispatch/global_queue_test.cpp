#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>

#include "platform/dispatch/queue.h"
#include "platform/dispatch/semaphore.h"

namespace ostra {
namespace {

DispatchQueue& queue() { return globalQueue(QualityOfService::userInitiated); }

TEST(GlobalQueue, RunsABlockOnABackgroundThread) {
  DispatchSemaphore done(0);
  bool main = true;
  queue().async([&] {
    main = isMainThread();
    done.signal();
  });
  done.wait();
  EXPECT_FALSE(main);
}

TEST(GlobalQueue, LetsASynchronousCallerWait) {
  int value = 0;
  queue().sync([&value] { value = 1; });
  EXPECT_EQ(value, 1);
}

// A batch waits in one block for what the next one does, and that one may wait in its turn.
TEST(GlobalQueue, RunsABlockWhileManyOthersWaitForIt) {
  constexpr int kWaiting = 40;
  DispatchSemaphore gate(0), done(0);
  for (int i = 0; i < kWaiting; ++i) {
    queue().async([&gate, &done] {
      gate.wait();
      done.signal();
    });
  }
  queue().async([&gate] {
    for (int i = 0; i < kWaiting; ++i) gate.signal();
  });
  for (int i = 0; i < kWaiting; ++i) done.wait();
}

TEST(GlobalQueue, RunsEveryBlockOfManyOnABoundedNumberOfThreads) {
  constexpr int kBlocks = 2000;
  std::atomic<int> running{0}, most{0}, runs{0};
  DispatchSemaphore done(0);
  for (int i = 0; i < kBlocks; ++i) {
    queue().async([&] {
      const int now = ++running;
      int seen = most;
      while (seen < now && !most.compare_exchange_weak(seen, now)) {
      }
      std::this_thread::sleep_for(std::chrono::microseconds(200));
      --running;
      ++runs;
      done.signal();
    });
  }
  for (int i = 0; i < kBlocks; ++i) done.wait();
  EXPECT_EQ(runs, kBlocks);
  EXPECT_GT(most, 1);
  EXPECT_LE(most, 64);
}

TEST(GlobalQueue, ReusesAThreadThatIsFree) {
  const auto threads = [] {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
  };
  queue().sync([] {});
  const auto before = threads();
  for (int i = 0; i < 50; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    queue().sync([] {});
  }
  EXPECT_LE(threads(), before + 5);
}

TEST(GlobalQueue, KeepsSignalsAwayFromItsThreads) {
  bool interruptIsBlocked = false, faultIsBlocked = true;
  queue().sync([&] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    interruptIsBlocked = sigismember(&mask, SIGINT) == 1;
    faultIsBlocked = sigismember(&mask, SIGSEGV) == 1;
  });
  EXPECT_TRUE(interruptIsBlocked);
  EXPECT_FALSE(faultIsBlocked);
}

// Waits for ever on purpose: the test program must end all the same, without a leak or a crash.
TEST(GlobalQueue, DoesNotHoldUpTheEndOfTheProcessByABlockThatWaits) {
  static auto* const never = new DispatchSemaphore(0);
  DispatchSemaphore begun(0);
  queue().async([&begun] {
    begun.signal();
    never->wait();
  });
  begun.wait();
}

}  // namespace
}  // namespace ostra
