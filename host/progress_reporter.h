#pragma once
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace ostra {

/// The work that is reported on: how many items, what is done with them, and how long it goes on before
/// anything is shown.
struct ReportedWork {
  std::size_t items = 0;
  std::string title;
  std::chrono::milliseconds patience{};
};

/// Shows how far a request is, once it has been at work for long enough. What is shown is brought up to date
/// ten times a second at most, however fast the items go by. Made and ended on the main thread; its end takes
/// the display away.
class ProgressReporter {
 public:
  explicit ProgressReporter(ReportedWork work);
  ~ProgressReporter();
  ProgressReporter(const ProgressReporter&) = delete;
  ProgressReporter& operator=(const ProgressReporter&) = delete;

  /// To be told that the item of an index, counted from 0, is in work now. Any thread, also after the
  /// reporter's end.
  std::function<void(std::size_t index, const std::string& name)> itemBegan() const;

  /// How long ago the first item began; zero before.
  std::chrono::milliseconds worked() const;
  /// Whether the user has put the display away. Main thread.
  bool wasPutAway() const;

 private:
  struct State;
  const std::shared_ptr<State> state_;
  std::thread watcher_;
};

}  // namespace ostra
