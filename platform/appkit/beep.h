#pragma once

namespace ostra {

/// Sounds the user's alert sound. Main thread.
void NSBeep();

}  // namespace ostra
