#pragma once
#include "platform/imageio/codec_door.h"

namespace ostra {

/// Whether two pictures of the same size look alike from afar: in every block of 64 pixels a side, each
/// component, weighed by opacity, and the opacity have about the same average. What a lossy encoder does to a
/// picture changes averages little (the limit is an eighth of the range); a picture that it lost shows.
bool areAlike(const Pixels& one, const Pixels& other);

}  // namespace ostra
