#include "platform/extension/extension_item.h"

namespace ostra {

NSExtensionItem::NSExtensionItem(std::vector<std::shared_ptr<NSItemProvider>> attachments)
    : attachments_(std::move(attachments)) {}

const std::vector<std::shared_ptr<NSItemProvider>>& NSExtensionItem::attachments() const {
  return attachments_;
}

}  // namespace ostra
