#pragma once
#include <string>
#include <vector>

namespace ostra {

enum class NSAlertStyle { warning = 0, informational = 1, critical = 2 };

/// A message with buttons. Main thread.
class NSAlert {
 public:
  NSAlertStyle alertStyle = NSAlertStyle::warning;
  std::string messageText;
  std::string informativeText;
  std::vector<std::string> buttons;

  void addButtonWithTitle(std::string title);
  /// Shows the alert and returns when the user has dismissed it.
  void runModal() const;
};

}  // namespace ostra
