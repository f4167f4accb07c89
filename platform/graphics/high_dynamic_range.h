#pragma once
#include <cstdint>
#include <vector>

namespace ostra {

/// The two signals of ITU-R BT.2100 as curves of a profile: what light a value is, as a fraction of the white
/// of a display that shows no highlights. 1,024 steps of the value from 0 to 1, light from 0 to 65535, never
/// falling.
///
/// White is 203 cd/m² (ITU-R BT.2408), and what is brighter, up to 1,000 cd/m², is brought under it as in
/// ITU-R BT.2390, 5.4.1: light of less than 92 cd/m² stays as it is. Each component is taken for itself, for
/// such is a profile's curve. Values of more than 1,000 cd/m² are white.
std::vector<std::uint16_t> perceptualQuantizerCurve();
/// As a display of 1,000 cd/m² shows the signal, with its system gamma of 1.2.
std::vector<std::uint16_t> hybridLogGammaCurve();

}  // namespace ostra
