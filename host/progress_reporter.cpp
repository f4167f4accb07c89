#include "host/progress_reporter.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

#include "platform/appkit/renderer.h"
#include "platform/dispatch/queue.h"
#include "platform/foundation/service.h"

namespace ostra {

struct ProgressReporter::State {
  std::mutex mutex;
  std::condition_variable ended;
  bool end = false;
  bool changed = false;
  bool shown = false;
  Progress now;
};

namespace {

using namespace std::chrono_literals;

constexpr auto kPause = 100ms;
constexpr auto kPatienceForOne = 1000ms;

void tell(const Progress& progress) {
  try {
    Service<Renderer>::current().progress(progress);
  } catch (const std::bad_alloc&) {  // the next one may be told
  }
}

/// On the main thread, which may get to it only after the reporter has gone.
template <class State>
void show(State& state) {
  Progress now;
  {
    const std::lock_guard lock(state.mutex);
    if (state.end) return;
    state.shown = true;
    now = state.now;
  }
  tell(now);
}

template <class State>
void watch(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  auto pause = state->now.total > 1 ? kPause : kPatienceForOne;
  while (!state->ended.wait_for(lock, pause, [&state] { return state->end; })) {
    if (!std::exchange(state->changed, false)) continue;
    try {
      mainQueue().async([state] { show(*state); });
    } catch (const std::bad_alloc&) {
      state->changed = true;
    }
    pause = kPause;
  }
}

}  // namespace

ProgressReporter::ProgressReporter(std::size_t total) : state_(std::make_shared<State>()) {
  state_->now.total = total;
  watcher_ = std::thread([state = state_] { watch(state); });
}

ProgressReporter::~ProgressReporter() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->end = true;
  }
  state_->ended.notify_one();
  watcher_.join();
  const std::size_t total = state_->now.total;
  if (state_->shown) tell({total, total, ""});
}

std::function<void(std::size_t, const std::string&)> ProgressReporter::itemBegan() const {
  return [state = state_](std::size_t index, const std::string& name) {
    const std::lock_guard lock(state->mutex);
    state->now.done = index;
    try {
      state->now.name = name;
      state->changed = true;
    } catch (const std::bad_alloc&) {  // a picture is not given up for a line about it
    }
  };
}

}  // namespace ostra
