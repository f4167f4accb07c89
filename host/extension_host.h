#pragma once
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/extension_context.h"
#include "host/work.h"
#include "platform/extension/request_handling.h"

namespace ostra {

/// A class that a bundle may name as its principal class.
struct PrincipalClass {
  std::string_view name;
  std::shared_ptr<NSExtensionRequestHandling> (*make)();
};

/// Every principal class of the program.
std::span<const PrincipalClass> principalClasses();

/// Makes the object that a bundle's property list names. Throws `UsageError` when that cannot be done.
std::shared_ptr<NSExtensionRequestHandling> makePrincipalObject(
    const std::string& className, std::span<const PrincipalClass> classes = principalClasses());

/// Hands the files to the object as one selection, opens its panel if it has one, and turns the main loop
/// until the request has ended; nothing when a signal ended the work, or the panel, first, and the request
/// stays open. `itemBegan` is told of each file that is in work; it may be empty. What `openPanel` throws
/// goes on to the caller. Main thread.
std::optional<RequestEnd> serveRequest(NSExtensionRequestHandling& principal,
                                       const std::vector<std::string>& files, Work::ItemBegan itemBegan,
                                       const std::function<void()>& openPanel = nullptr);

}  // namespace ostra
