#pragma once
#include <memory>
#include <vector>

#include "platform/extension/item_provider.h"
#include "platform/foundation/object.h"

namespace ostra {

/// One selection of a request: its attachments, possibly none.
class NSExtensionItem : public NSObject {
 public:
  explicit NSExtensionItem(std::vector<std::shared_ptr<NSItemProvider>> attachments);
  const std::vector<std::shared_ptr<NSItemProvider>>& attachments() const;

 private:
  std::vector<std::shared_ptr<NSItemProvider>> attachments_;
};

}  // namespace ostra
