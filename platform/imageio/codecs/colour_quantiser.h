#pragma once
#include <cstddef>
#include <vector>

#include "platform/imageio/codecs/colour_histogram.h"

namespace ostra {

/// At most `most` (1 to 256) colours that stand for those of a picture with a small sum of squared
/// differences of the stored values, which are nearly even to the eye already. Boxes around the colours are
/// divided where that gains most, then the means of what lies nearest are taken, several times over. The same
/// for the same counts.
std::vector<Rgb> quantisedPalette(std::vector<ColourCount> counts, std::size_t most);

}  // namespace ostra
