#pragma once
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace ostra {

/// Shows how far a request is: soon when there are several items, after a second when there is one. What is
/// shown is brought up to date ten times a second at most, however fast the items go by. Made and ended on
/// the main thread; its end takes the display away.
class ProgressReporter {
 public:
  explicit ProgressReporter(std::size_t total);
  ~ProgressReporter();
  ProgressReporter(const ProgressReporter&) = delete;
  ProgressReporter& operator=(const ProgressReporter&) = delete;

  /// To be told that the item of an index, counted from 0, is in work now. Any thread, also after the
  /// reporter's end.
  std::function<void(std::size_t index, const std::string& name)> itemBegan() const;

 private:
  struct State;
  const std::shared_ptr<State> state_;
  std::thread watcher_;
};

}  // namespace ostra
