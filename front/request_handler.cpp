#include "front/request_handler.h"

#include "engine/engine.h"
#include "front/batch_report.h"
#include "front/error.h"
#include "front/kind.h"

namespace ostra {

void OstraQuickActionRequestHandler::beginRequestWithExtensionContext(
    std::shared_ptr<NSExtensionContext> context) {
  const std::optional<OstraQuickActionKind> kind = configuredKind();
  // The profile conversion has a principal object of its own, which asks for the profile first.
  if (!kind || *kind == OstraQuickActionKind::convertColorProfile) {
    return context->cancelRequestWithError(noConversionError());
  }
  std::vector<std::shared_ptr<NSItemProvider>> providers = collectProviders(extensionItems(*context));
  if (providers.empty()) return context->cancelRequestWithError(noImageError());

  const auto engine = std::make_shared<OstraQuickActionEngine>(*kind, nullptr, kLossyQuality);
  engine->run(std::move(providers), [context, title = displayTitle(*kind) + " could not convert every image"](
                                        const auto& /*outcomes*/, const auto& failures) {
    reportBatch(*context, failures, title);
  });
}

std::vector<std::shared_ptr<NSExtensionItem>> extensionItems(const NSExtensionContext& context) {
  std::vector<std::shared_ptr<NSExtensionItem>> items;
  for (const std::shared_ptr<NSObject>& object : context.inputItems()) {
    if (auto item = std::dynamic_pointer_cast<NSExtensionItem>(object)) items.push_back(std::move(item));
  }
  return items;
}

std::vector<std::shared_ptr<NSItemProvider>> collectProviders(
    const std::vector<std::shared_ptr<NSExtensionItem>>& items) {
  std::vector<std::shared_ptr<NSItemProvider>> providers;
  for (const std::shared_ptr<NSExtensionItem>& item : items) {
    providers.insert(providers.end(), item->attachments().begin(), item->attachments().end());
  }
  return providers;
}

}  // namespace ostra
