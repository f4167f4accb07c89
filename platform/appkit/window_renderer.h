#pragma once
#include <string>

#include "platform/appkit/renderer.h"

namespace ostra {

/// What windows ask of the environment. Before the process has other threads, which may look at it any time.
void prepareForWindows();

/// The renderer of the desktop's windows, loaded on first use; null, with the reason, when there is none.
/// Main thread.
Renderer* windowRenderer(std::string& reason);

}  // namespace ostra
