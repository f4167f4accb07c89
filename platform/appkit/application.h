#pragma once

namespace ostra {

/// The running program as a user interface. It exists when, and only when, somebody can be shown something.
class NSApplication {
 public:
  virtual ~NSApplication() = default;
  virtual void activateIgnoringOtherApps(bool ignoring) = 0;

  /// The application, or null.
  static NSApplication* shared();
  /// Set by the host before the first request; null ends it. Main thread.
  static void setShared(NSApplication* application);
};

}  // namespace ostra
