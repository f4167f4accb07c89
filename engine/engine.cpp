#include "engine/engine.h"

namespace ostra {

OstraQuickActionEngine::OstraQuickActionEngine(OstraQuickActionKind kind, CGColorSpaceRef targetColorSpace,
                                               double lossyQuality)
    : kind_(kind), targetColorSpace_(std::move(targetColorSpace)), lossyQuality_(lossyQuality) {}

}  // namespace ostra
