#include "host/user_interface.h"

#include <cstdlib>

#include <unistd.h>

#include "host/lazy_windows.h"
#include "host/stop_signals.h"
#include "platform/appkit/terminal/terminal_renderer.h"
#include "platform/appkit/window_renderer.h"

namespace ostra {
namespace {

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

/// Nothing is reported after a signal: not even the failure of the picture that was in work. One that comes
/// while something is shown ends that.
class UntilStopped : public Renderer {
 public:
  explicit UntilStopped(Renderer& shown) : shown_(shown) {}
  void activate() override { shown_.activate(); }
  void beep() override { shown_.beep(); }
  void run(const NSAlert& alert) override {
    if (StopSignals::received()) return;
    const StopListener listener([this] { shown_.withdraw(); });
    shown_.run(alert);
  }
  SavePanelAnswer run(const NSSavePanel& panel) override {
    if (StopSignals::received()) return {};
    const StopListener listener([this] { shown_.withdraw(); });
    return shown_.run(panel);
  }
  bool present(const std::shared_ptr<NSViewController>& controller, const std::string& title) override {
    return !StopSignals::received() && shown_.present(controller, title);
  }
  void withdraw() override { shown_.withdraw(); }
  bool progress(const Progress& progress) override {
    const bool ended = progress.done >= progress.total;
    return (StopSignals::received() && !ended) || shown_.progress(progress);
  }
  void notify(const std::string& title, const std::string& text) override {
    if (!StopSignals::received()) shown_.notify(title, text);
  }

 private:
  Renderer& shown_;
};

class HostApplication : public NSApplication {
 public:
  void activateIgnoringOtherApps(bool) override { Service<Renderer>::current().activate(); }
};

}  // namespace

Surroundings Surroundings::current() {
  return {.inputIsTerminal = isatty(STDIN_FILENO) == 1,
          .errorsAreTerminal = isatty(STDERR_FILENO) == 1,
          .hasDisplay = isSet("WAYLAND_DISPLAY") || isSet("DISPLAY")};
}

Display chooseDisplay(UserInterfaceChoice choice, const Surroundings& surroundings) {
  switch (choice) {
    case UserInterfaceChoice::desktop:
      return Display::windows;
    case UserInterfaceChoice::terminal:
      return Display::terminal;
    case UserInterfaceChoice::none:
      return Display::lines;
    case UserInterfaceChoice::automatic:
      break;
  }
  if (surroundings.inputIsTerminal && surroundings.errorsAreTerminal) return Display::terminal;
  return surroundings.hasDisplay ? Display::windows : Display::lines;
}

UserInterface::UserInterface(Display display) {
  if (display == Display::terminal) own_ = std::make_unique<TerminalRenderer>();
  if (display == Display::windows) {
    prepareForWindows();
    own_ = std::make_unique<LazyWindows>(windowRenderer);
  }
  if (own_) application_ = std::make_unique<HostApplication>();
  untilStopped_ = std::make_unique<UntilStopped>(own_ ? *own_ : Renderer::standard());
  override_.emplace(*untilStopped_);
  NSApplication::setShared(application_.get());
}

UserInterface::~UserInterface() { NSApplication::setShared(nullptr); }

}  // namespace ostra
