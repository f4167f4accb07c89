#pragma once
#include <vector>

namespace ostra::gtk {

/// Lets the main queue wait in GLib's default context, so that windows live while it waits. Main thread.
void attachMainQueue();

/// A window that is waited for. The wait turns the same context as ever: other windows stay alive, and blocks
/// of the main queue run unless one of them is waiting here itself. Runs nest. Main thread.
class ModalRun {
 public:
  ModalRun();
  ~ModalRun();
  ModalRun(const ModalRun&) = delete;
  ModalRun& operator=(const ModalRun&) = delete;

  /// Waits for `end`.
  void wait();
  void end() { ended_ = true; }
  bool isCancelled() const { return cancelled_; }

  /// Ends every run there is, as cancelled.
  static void cancelAll();

 private:
  bool ended_ = false;
  bool cancelled_ = false;
};

}  // namespace ostra::gtk
