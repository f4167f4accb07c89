#pragma once
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "platform/appkit/alert.h"
#include "platform/appkit/save_panel.h"
#include "platform/appkit/view_controller.h"

namespace ostra {

/// How a save panel was left. The place counts only with `NSModalResponseOK`, and may be missing even then.
struct SavePanelAnswer {
  NSModalResponse response = NSModalResponseCancel;
  std::optional<URL> url;
};

/// How far a request is. `name` is the item in work, `title` what is done with it.
struct Progress {
  std::size_t done = 0;
  std::size_t total = 0;
  std::string name;
  std::string title;
};

/// Shows what the plain objects of this folder describe: in windows, on a terminal, or as lines. Main thread.
/// Replaceable through `Service<Renderer>`.
class Renderer {
 public:
  virtual ~Renderer() = default;
  /// Brings the program to the front.
  virtual void activate() = 0;
  virtual void beep() = 0;
  virtual void run(const NSAlert& alert) = 0;
  virtual SavePanelAnswer run(const NSSavePanel& panel) = 0;
  /// Shows a controller's view under a title. A window stays when this returns, and is used while the main
  /// loop turns; a renderer that asks questions has put them, and used the controls, when this returns.
  /// Closing the view presses the button whose key is Escape; when that is disabled, or there is none, it
  /// hides the view and whatever goes on goes on. False when the view cannot be shown; nothing was pressed
  /// then.
  virtual bool present(const std::shared_ptr<NSViewController>& controller, const std::string& title) = 0;
  /// Ends an alert or a panel that is being shown, as cancelled, and hides what is presented. Any thread;
  /// returns at once.
  virtual void withdraw() = 0;
  /// The host's only; called again and again while work goes on, and with done equal to total at its end.
  /// False once the user has put away what shows it; it does not come back then.
  virtual bool progress(const Progress& progress) = 0;
  /// The host's only: tells on the desktop what has ended while nobody was looking; at once, or within
  /// seconds where the desktop must start something for it.
  virtual void notify(const std::string& title, const std::string& text) = 0;

  /// Plain lines on standard error; nobody to ask, so a save panel counts as cancelled and no controller is
  /// presented.
  static Renderer& standard();
};

}  // namespace ostra
