#pragma once

namespace ostra {

/// Linear light, 0 to 1, as the value that sRGB stores for it (IEC 61966-2-1). What lies outside becomes the
/// nearest end, and no number 0.
double srgbValueOfLight(double light);

}  // namespace ostra
