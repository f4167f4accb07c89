#pragma once
#include <functional>

namespace ostra {

/// Runs `work` on the main thread and returns when it has run: at once there, through the main queue from any
/// other thread. What it throws is thrown to the caller.
void runOnMainThread(const std::function<void()>& work);

}  // namespace ostra
