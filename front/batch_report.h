#pragma once
#include <exception>
#include <string>
#include <vector>

#include "platform/extension/context.h"

namespace ostra {

/// Ends the request of a finished batch: completed with no items when nothing failed. Otherwise, even beside
/// files that were converted, shows the alert and, once it is dismissed, cancels the request with the batch's
/// error. Main thread.
void reportBatch(NSExtensionContext& context, const std::vector<std::exception_ptr>& failures,
                 const std::string& alertTitle);

}  // namespace ostra
