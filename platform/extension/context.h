#pragma once
#include <functional>
#include <memory>
#include <vector>

#include "platform/foundation/error.h"
#include "platform/foundation/object.h"

namespace ostra {

/// One request of the host. It is ended once, on the main thread, by completing or cancelling; a second end
/// is ignored.
class NSExtensionContext {
 public:
  using InputItems = std::vector<std::shared_ptr<NSObject>>;

  virtual ~NSExtensionContext() = default;
  /// What the user selected. Objects that are no `NSExtensionItem` may be among them.
  virtual InputItems inputItems() const = 0;
  /// The handler may be empty.
  virtual void completeRequestReturningItems(const InputItems& items,
                                             std::function<void(bool)> completionHandler) = 0;
  virtual void cancelRequestWithError(const NSError& error) = 0;
};

}  // namespace ostra
