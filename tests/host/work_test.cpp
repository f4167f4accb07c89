#include "host/work.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/stop_signals.h"
#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"

namespace ostra {
namespace {

using testing::ElementsAre;

TEST(StopSignals, RememberASignalInsteadOfEndingTheProcess) {
  const StopSignals signals;
  EXPECT_FALSE(StopSignals::received());
  std::raise(SIGINT);
  EXPECT_EQ(StopSignals::received(), SIGINT);
  std::raise(SIGTERM);
  EXPECT_EQ(StopSignals::received(), SIGTERM);
}

TEST(StopSignals, ForgetAtTheirEnd) {
  {
    const StopSignals signals;
    std::raise(SIGINT);
  }
  EXPECT_FALSE(StopSignals::received());
}

TEST(StopSignals, LeaveASignalIgnoredThatTheParentHadIgnored) {
  std::signal(SIGHUP, SIG_IGN);
  {
    const StopSignals signals;
    std::raise(SIGHUP);
    EXPECT_FALSE(StopSignals::received());
  }
  EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST(StopListener, HearsASignalThatComes) {
  const StopSignals signals;
  std::atomic<bool> heard{false};
  const StopListener listener([&heard] { heard = true; });
  std::raise(SIGINT);
  while (!heard) std::this_thread::yield();
}

TEST(StopListener, HearsASignalThatCameBefore) {
  const StopSignals signals;
  std::raise(SIGINT);
  for (int i = 0; i < 2; ++i) {
    std::atomic<bool> heard{false};
    const StopListener listener([&heard] { heard = true; });
    while (!heard) std::this_thread::yield();
  }
}

TEST(StopListener, EndsWithoutASignal) {
  const StopSignals signals;
  bool heard = false;
  {
    const StopListener listener([&heard] { heard = true; });
  }
  EXPECT_FALSE(heard);
}

TEST(StopListener, DoesNotHearASignalOfFormerTimes) {
  {
    const StopSignals signals;
    std::raise(SIGINT);
    const StopListener listener([] {});
  }
  const StopSignals signals;
  std::atomic<bool> heard{false};
  {
    const StopListener listener([&heard] { heard = true; });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
  }
  EXPECT_FALSE(heard);
}

TEST(Work, StopsTheMainLoopForASignalWhileNothingIsInWork) {
  const StopSignals signals;
  Work work({});
  work.stopIfSignalled();
  mainQueue().async([] { MainLoop::stop(); });
  MainLoop::run();  // only the line before ended it
  std::raise(SIGTERM);
  work.stopIfSignalled();
  MainLoop::run();  // returns
}

TEST(Work, TellsWhichItemIsInWork) {
  std::vector<std::string> told;
  Work work(
      [&told](std::size_t index, const std::string& name) { told.push_back(std::to_string(index) + name); });
  work.run(0, "a", [&told] { told.push_back("work"); });
  work.run(1, "b", [] {});
  EXPECT_THAT(told, ElementsAre("0a", "work", "1b"));
}

TEST(Work, BeginsNothingAfterASignalAndStopsTheMainLoop) {
  const StopSignals signals;
  Work work({});
  std::raise(SIGTERM);
  bool ran = false;
  work.run(0, "a", [&ran] { ran = true; });
  EXPECT_FALSE(ran);
  MainLoop::run();  // returns
}

// The main thread then leaves, and nothing may begin behind its back.
TEST(Work, BeginsNothingEvenWhenTheSignalIsForgotten) {
  Work work({});
  {
    const StopSignals signals;
    work.run(0, "a", [] { std::raise(SIGTERM); });
  }
  bool ran = false;
  work.run(1, "b", [&ran] { ran = true; });
  EXPECT_FALSE(ran);
  MainLoop::run();  // returns
}

TEST(Work, EndsTheItemInWorkBeforeItStopsTheMainLoop) {
  const StopSignals signals;
  Work work({});
  bool ended = false;
  std::thread worker([&] {
    work.run(0, "a", [&ended] {
      std::raise(SIGINT);
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      ended = true;
    });
  });
  MainLoop::run();
  worker.join();
  EXPECT_TRUE(ended);
}

// An item that was not to be had in place is asked for once more, from within the first answer.
TEST(Work, CountsAnItemThatIsAskedForTwiceAsOneInWork) {
  const StopSignals signals;
  Work work({});
  std::atomic<bool> secondBegun{false}, ended{false};
  std::thread second;
  std::thread first([&] {
    work.run(0, "a", [&] {
      second = std::thread([&] {
        work.run(0, "a", [&] {
          secondBegun = true;
          std::this_thread::sleep_for(std::chrono::milliseconds(30));
          ended = true;
        });
      });
      while (!secondBegun) std::this_thread::yield();
      std::raise(SIGINT);
    });
  });
  MainLoop::run();
  EXPECT_TRUE(ended);
  first.join();
  second.join();
}

}  // namespace
}  // namespace ostra
