#pragma once

namespace ostra::gtk {

/// Lets windows be dark when the user wants the desktop dark, and follows the wish while it changes. Main
/// thread, with a display.
void followColorScheme();

}  // namespace ostra::gtk
