#pragma once
#include <optional>

#include "platform/extension/context.h"

namespace ostra {

/// How a request ended: completed, or cancelled with an error.
struct RequestEnd {
  std::optional<NSError> error;
};

/// The one request that this process serves. Its end is recorded and stops the main loop.
class HostExtensionContext : public NSExtensionContext {
 public:
  explicit HostExtensionContext(InputItems inputItems) : inputItems_(std::move(inputItems)) {}

  InputItems inputItems() const override { return inputItems_; }
  void completeRequestReturningItems(const InputItems& items,
                                     std::function<void(bool)> completionHandler) override;
  void cancelRequestWithError(const NSError& error) override;

  /// Nothing while the request goes on.
  const std::optional<RequestEnd>& end() const { return end_; }

 private:
  bool finish(RequestEnd end);

  InputItems inputItems_;
  std::optional<RequestEnd> end_;
};

}  // namespace ostra
