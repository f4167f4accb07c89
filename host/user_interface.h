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
/// the application. Windows have no renderer yet and are lines. After a signal asked to stop it shows and
/// asks nothing.
class UserInterface {
 public:
  explicit UserInterface(Display display);
  ~UserInterface();
  UserInterface(const UserInterface&) = delete;
  UserInterface& operator=(const UserInterface&) = delete;

 private:
  std::unique_ptr<Renderer> terminal_;
  std::unique_ptr<Renderer> untilStopped_;
  std::unique_ptr<NSApplication> application_;
  std::optional<Service<Renderer>::Override> override_;
};

}  // namespace ostra
