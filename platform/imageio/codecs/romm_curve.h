#pragma once

namespace ostra {

/// Linear light, 0 to 1, as the value that the space that kCGColorSpaceROMMRGB names stores for it. What lies
/// outside becomes the nearest end, and no number 0.
double rommValueOfLight(double light);

}  // namespace ostra
