#pragma once
#include <string>

#include "platform/appkit/renderer.h"

namespace ostra {

/// The renderer of the desktop's windows, loaded on first use; null, with the reason, when there is none.
/// Main thread.
Renderer* windowRenderer(std::string& reason);

}  // namespace ostra
