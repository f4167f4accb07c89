#pragma once
#include <string>
#include <string_view>

#include "platform/appkit/alert.h"

namespace ostra {

/// An alert as lines: its message, then each informative line, indented. Ends with a line feed.
std::string plainText(const NSAlert& alert);

/// Writes all of `text` to a descriptor, as far as it is taken.
void writeText(int descriptor, std::string_view text);

}  // namespace ostra
