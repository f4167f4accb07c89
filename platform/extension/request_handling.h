#pragma once
#include <memory>

#include "platform/extension/context.h"
#include "platform/foundation/object.h"

namespace ostra {

/// A principal object that serves requests. The host creates it by the name in the bundle's property list.
class NSExtensionRequestHandling : public NSObject {
 public:
  /// Called once a request, on the main thread; must return at once.
  virtual void beginRequestWithExtensionContext(std::shared_ptr<NSExtensionContext> context) = 0;
};

}  // namespace ostra
