#pragma once

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
  /// An event descriptor, readable when something is queued.
  static int descriptor();
};

}  // namespace ostra
