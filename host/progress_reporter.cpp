#include "host/progress_reporter.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "platform/appkit/renderer.h"
#include "platform/dispatch/queue.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kPause = 100ms;

}  // namespace

struct ProgressReporter::State {
  explicit State(ReportedWork work) : patience(work.patience) {
    now.total = work.items;
    now.title = std::move(work.title);
  }

  const std::chrono::milliseconds patience;
  std::mutex mutex;
  std::condition_variable somethingNew;
  bool end = false;
  std::optional<Clock::time_point> begin;
  bool changed = false;
  Progress now;
  // The main thread's.
  bool shown = false;
  bool putAway = false;

  void tell(const Progress& progress) {
    try {
      if (!Service<Renderer>::current().progress(progress)) putAway = true;
    } catch (const std::bad_alloc&) {  // the next one may be told
    }
  }
};

namespace {

/// On the main thread, which may get to it only after the reporter has gone.
template <class State>
void show(State& state) {
  Progress now;
  {
    const std::lock_guard lock(state.mutex);
    if (state.end) return;
    now = state.now;
  }
  state.shown = true;
  state.tell(now);
}

template <class State>
void watch(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  state->somethingNew.wait(lock, [&state] { return state->end || state->begin; });
  auto pause = state->patience;
  while (!state->somethingNew.wait_for(lock, pause, [&state] { return state->end; })) {
    pause = kPause;
    if (!std::exchange(state->changed, false)) continue;
    try {
      mainQueue().async([state] { show(*state); });
    } catch (const std::bad_alloc&) {
      state->changed = true;
    }
  }
}

}  // namespace

ProgressReporter::ProgressReporter(ReportedWork work) : state_(std::make_shared<State>(std::move(work))) {
  watcher_ = std::thread([state = state_] { watch(state); });
}

ProgressReporter::~ProgressReporter() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->end = true;
  }
  state_->somethingNew.notify_one();
  watcher_.join();
  const std::size_t total = state_->now.total;
  if (state_->shown) state_->tell({total, total, "", ""});
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
    if (state->begin) return;
    state->begin = Clock::now();
    state->somethingNew.notify_one();
  };
}

std::chrono::milliseconds ProgressReporter::worked() const {
  const std::lock_guard lock(state_->mutex);
  if (!state_->begin) return 0ms;
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - *state_->begin);
}

bool ProgressReporter::wasPutAway() const { return state_->putAway; }

}  // namespace ostra
