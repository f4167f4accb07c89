#pragma once
#include <string>

namespace ostra {

class Renderer;

/// What the desktop calls this program: the name of its desktop file.
inline constexpr const char* kApplicationIdentifier = "org.ostra.Ostra";

}  // namespace ostra

/// The one entry of a module that shows windows. `version` is the program's: a module of another one refuses,
/// for the two share objects. Called once; the renderer lives as long as the process. Null, with the reason,
/// when there is nothing to show windows on. Main thread.
extern "C" ostra::Renderer* ostra_window_renderer(const char* version, std::string* reason);
