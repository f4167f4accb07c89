#pragma once
#include <string>

#include "platform/graphics/icc_check.h"

namespace ostra {

/// The description of a profile in UTF-8: the English one where it has several languages, else the first.
/// Empty when there is none. Ours because the colour library leaves stray characters behind text outside the
/// basic plane.
std::string iccDescription(const CheckedProfile& profile);

}  // namespace ostra
