#pragma once
#include <functional>

namespace ostra {

/// Turns the main queue. Main thread only, but for `stop` and `descriptor`.
class MainLoop {
 public:
  /// Runs queued blocks, waiting for more, until `stop`.
  static void run();
  /// Lets `run` return after the block in work, or the next `run` at once; callable from any thread.
  static void stop();
  /// Runs what is queued and returns; for another loop that watches `descriptor`. Not re-entrant: from inside
  /// a block it does nothing.
  static void drain();
  /// An event descriptor, readable when something is queued or the loop is to stop.
  static int descriptor();
  /// How `run` waits while nothing is queued: the function handles one turn of another loop, which watches
  /// `descriptor` and returns once that is readable. Empty: the main queue waits by itself. Main thread;
  /// counts from the next wait on, also inside a `run` that is under way.
  static void setWaiting(std::function<void()> turnOfAnotherLoop);
};

}  // namespace ostra
