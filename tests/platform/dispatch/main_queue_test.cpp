#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"

namespace ostra {
namespace {

using testing::ElementsAre;

bool somethingIsQueued() {
  pollfd entry{MainLoop::descriptor(), POLLIN, 0};
  return poll(&entry, 1, 0) == 1;
}

TEST(MainQueue, RunsBlocksInTheOrderOfQueueing) {
  std::vector<int> order;
  for (int i = 0; i < 3; ++i) mainQueue().async([&order, i] { order.push_back(i); });
  EXPECT_TRUE(order.empty());
  MainLoop::drain();
  EXPECT_THAT(order, ElementsAre(0, 1, 2));
}

TEST(MainQueue, KeepsTheOrderOfEachThreadThatQueues) {
  std::vector<int> first, second;
  std::thread a([&first] {
    for (int i = 0; i < 1000; ++i) mainQueue().async([&first, i] { first.push_back(i); });
  });
  std::thread b([&second] {
    for (int i = 0; i < 1000; ++i) mainQueue().async([&second, i] { second.push_back(i); });
  });
  a.join();
  b.join();
  MainLoop::drain();
  ASSERT_EQ(first.size(), 1000u);
  ASSERT_EQ(second.size(), 1000u);
  EXPECT_TRUE(std::is_sorted(first.begin(), first.end()));
  EXPECT_TRUE(std::is_sorted(second.begin(), second.end()));
}

TEST(MainQueue, RunsOnTheMainThread) {
  bool main = false;
  std::thread([&main] {
    EXPECT_FALSE(isMainThread());
    mainQueue().async([&main] {
      main = isMainThread();
      MainLoop::stop();
    });
  }).detach();
  MainLoop::run();
  EXPECT_TRUE(main);
}

TEST(MainQueue, LetsASynchronousCallerWaitUntilItsBlockHasRun) {
  int steps = 0;
  std::thread worker([&steps] {
    mainQueue().sync([&steps] { steps = 1; });
    EXPECT_EQ(steps, 1);
    MainLoop::stop();
  });
  MainLoop::run();
  worker.join();
  EXPECT_EQ(steps, 1);
}

TEST(MainLoop, ReturnsAtOnceWhenItWasStoppedBefore) {
  MainLoop::stop();
  MainLoop::run();
}

TEST(MainLoop, IsWokenByAStopOfAnotherThread) {
  std::thread worker([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    MainLoop::stop();
  });
  MainLoop::run();
  worker.join();
}

TEST(MainLoop, LeavesLaterBlocksInTheQueueWhenItIsStopped) {
  int runs = 0;
  mainQueue().async([] { MainLoop::stop(); });
  mainQueue().async([&runs] { ++runs; });
  MainLoop::run();
  EXPECT_EQ(runs, 0);
  EXPECT_TRUE(somethingIsQueued());
  MainLoop::drain();
  EXPECT_EQ(runs, 1);
}

TEST(MainLoop, RunsNoBlockInsideABlock) {
  std::vector<std::string> order;
  mainQueue().async([&order] {
    order.push_back("first begins");
    MainLoop::drain();
    order.push_back("first ends");
  });
  mainQueue().async([&order] { order.push_back("second"); });
  MainLoop::drain();
  EXPECT_THAT(order, ElementsAre("first begins", "first ends", "second"));
}

TEST(MainLoop, DoesNotKeepALoopSpinningThatWatchesItsDescriptorInsideABlock) {
  bool readableAfterDrain = true;
  mainQueue().async([&readableAfterDrain] {
    MainLoop::drain();
    readableAfterDrain = somethingIsQueued();
  });
  int runs = 0;
  mainQueue().async([&runs] { ++runs; });
  MainLoop::drain();
  EXPECT_FALSE(readableAfterDrain);
  EXPECT_EQ(runs, 1);
}

TEST(MainLoop, DrainsOnlyWhatWasQueuedBefore) {
  int runs = 0;
  std::function<void()> again = [&runs, &again] {
    if (++runs < 5) mainQueue().async(again);
  };
  mainQueue().async(again);
  MainLoop::drain();
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(somethingIsQueued());
  while (somethingIsQueued()) MainLoop::drain();
  EXPECT_EQ(runs, 5);
}

TEST(MainLoop, ShowsByItsDescriptorWhetherSomethingIsQueued) {
  MainLoop::drain();
  EXPECT_FALSE(somethingIsQueued());
  mainQueue().async([] {});
  EXPECT_TRUE(somethingIsQueued());
  MainLoop::drain();
  EXPECT_FALSE(somethingIsQueued());
}

TEST(MainLoop, WaitsInAnotherLoopOnceToldTo) {
  int turns = 0;
  bool readable = false;
  std::thread other;
  mainQueue().async([&] {
    MainLoop::setWaiting([&] {
      if (turns++ == 0) other = std::thread([] { mainQueue().async([] { MainLoop::stop(); }); });
      pollfd event{MainLoop::descriptor(), POLLIN, 0};
      readable = poll(&event, 1, 10'000) == 1;
    });
  });
  MainLoop::run();
  MainLoop::setWaiting(nullptr);
  other.join();
  EXPECT_TRUE(readable);
  EXPECT_GE(turns, 1);
  EXPECT_LE(turns, 2);  // one turn a wake-up: the descriptor does not stay readable
}

TEST(MainLoop, GoesOnAfterASignalInterruptedItsWait) {
  std::signal(SIGUSR1, [](int) {});
  const pthread_t mainThread = pthread_self();
  std::thread worker([mainThread] {
    for (int i = 0; i < 5; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      pthread_kill(mainThread, SIGUSR1);
    }
    mainQueue().async([] { MainLoop::stop(); });
  });
  MainLoop::run();
  worker.join();
  std::signal(SIGUSR1, SIG_DFL);
}

}  // namespace
}  // namespace ostra
