#pragma once
#include <chrono>
#include <cstddef>
#include <string>

#include "host/extension_context.h"

namespace ostra {

/// What is known of work when its request has ended.
struct FinishedWork {
  std::string title;
  std::size_t items = 0;
  std::chrono::milliseconds duration{};
  /// The user has put away what showed the work while it went on.
  bool wasPutAway = false;
};

/// Tells on the desktop that work has ended well, when it was long and the user has looked away from it. Of
/// failures the alert has told. Main thread.
void tellOnDesktop(const RequestEnd& end, const FinishedWork& work);

}  // namespace ostra
