#pragma once
#include <string_view>

namespace ostra {

/// Tells the user a sentence of the host's own: one line on standard error.
void say(std::string_view sentence);

/// Writes a command's result to standard output; the exit status says whether all of it went there.
int print(std::string_view text);

}  // namespace ostra
