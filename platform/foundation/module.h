#pragma once
#include <string>
#include <string_view>

namespace ostra {

/// Whether the program was installed with a module, such as "gtk4". Nothing is loaded. Any thread.
/// Throws `std::system_error` when the system does not tell: a format that can be written must not be taken
/// for one that cannot.
bool moduleIsInstalled(std::string_view name);

/// A function of a module, which is loaded on first use and stays: libraries such as GTK cannot be unloaded.
/// Null, with the reason, when the module or something that it needs is missing. Any thread.
void* moduleEntry(std::string_view name, const char* function, std::string& reason);

}  // namespace ostra
