#pragma once
#include <memory>
#include <vector>

#include "platform/extension/extension_item.h"
#include "platform/extension/request_handling.h"

namespace ostra {

/// The principal object of every bundle whose conversion needs no user interface. It reads which conversion
/// the bundle performs, starts the engine on the selected files and ends the request when the engine is done.
class OstraQuickActionRequestHandler : public NSExtensionRequestHandling {
 public:
  void beginRequestWithExtensionContext(std::shared_ptr<NSExtensionContext> context) override;
};

/// The items of a request, in order. Whatever else the host put among them is skipped without a word.
std::vector<std::shared_ptr<NSExtensionItem>> extensionItems(const NSExtensionContext& context);

/// The attachments of all items, flattened in order.
std::vector<std::shared_ptr<NSItemProvider>> collectProviders(
    const std::vector<std::shared_ptr<NSExtensionItem>>& items);

}  // namespace ostra
