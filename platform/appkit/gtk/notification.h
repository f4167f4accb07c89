#pragma once
#include <string>

namespace ostra::gtk {

/// Hands a notification to the desktop, silently, and waits for some seconds until the desktop has it: one
/// that must be started for it takes nothing from a program that has gone.
void sendNotification(const std::string& title, const std::string& text);

}  // namespace ostra::gtk
