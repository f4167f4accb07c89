#pragma once
#include <optional>

#include "platform/foundation/error.h"
#include "platform/foundation/file_coordinator.h"
#include "platform/foundation/url.h"

namespace ostra {

/// Runs the accessor for a write to `destination`, a related item of `primary`. A destination that exists as
/// a regular file is replaced as a whole or stays as it was; a missing one is the accessor's own affair.
/// Gives back the failure, in which case the destination is as it was.
std::optional<NSError> writeRelatedItem(const URL& destination, const URL& primary,
                                        const NSFileCoordinator::Accessor& accessor);

}  // namespace ostra
