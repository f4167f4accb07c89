#pragma once
#include <memory>
#include <optional>

#include "host/command_line.h"
#include "platform/appkit/application.h"
#include "platform/appkit/renderer.h"
#include "platform/foundation/service.h"

namespace ostra {

/// Where the process stands.
struct Surroundings {
  bool inputIsTerminal = false;
  bool errorsAreTerminal = false;
  bool hasDisplay = false;

  static Surroundings current();
};

enum class Display { windows, terminal, lines };

/// Where failures are shown and questions are put: as asked, or, left open, on a terminal before windows
/// before lines.
Display chooseDisplay(UserInterfaceChoice choice, const Surroundings& surroundings);

/// The user interface of the process for a scope: its renderer and, where somebody can be shown something,
/// the application. After a signal asked to stop it shows and asks nothing; what is shown when it comes ends
/// as cancelled.
class UserInterface {
 public:
  explicit UserInterface(Display display);
  ~UserInterface();
  UserInterface(const UserInterface&) = delete;
  UserInterface& operator=(const UserInterface&) = delete;

 private:
  std::unique_ptr<Renderer> own_;
  std::unique_ptr<Renderer> untilStopped_;
  std::unique_ptr<NSApplication> application_;
  std::optional<Service<Renderer>::Override> override_;
};

}  // namespace ostra
