#pragma once
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/graphics/image.h"

namespace ostra::test {

/// Profiles that another library writes.
Bytes cmykTableProfile();  // four inks, tables both ways, Lab, version 2; perceptual and measured differ
Bytes rgbTableProfile();   // RGB, tables both ways, version 4
/// RGB of a matrix and stored tables of the sRGB curve behind `dark` entries of no light, version 2.
Bytes curveTableProfile(int entries, int dark = 0);
Bytes gammaProfile(double gamma, double version);
Bytes grayLabProfile();  // gray whose connection space is Lab
Bytes withHeaderText(Bytes profile, std::size_t offset, const char (&text)[5]);

/// What the same library says without its optimisations, in double precision. Values and results are
/// fractions.
std::vector<double> convertByLibrary(ByteView from, ByteView to, const std::vector<double>& values,
                                     CGColorRenderingIntent intent = CGColorRenderingIntent::perceptual);

}  // namespace ostra::test
