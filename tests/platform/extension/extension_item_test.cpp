#include "platform/extension/extension_item.h"

#include <gtest/gtest.h>

#include "platform/extension/context.h"
#include "platform/extension/request_handling.h"

namespace ostra {
namespace {

struct EmptyProvider : NSItemProvider {
  std::vector<std::string> registeredTypeIdentifiers() const override { return {}; }
  std::optional<std::string> suggestedName() const override { return std::nullopt; }
  bool hasItemConformingToTypeIdentifier(std::string_view) const override { return false; }
  void loadInPlaceFileRepresentationForTypeIdentifier(std::string_view, InPlaceHandler) override {}
  void loadItemForTypeIdentifier(std::string_view, ItemHandler) override {}
};

TEST(ExtensionItem, KeepsItsAttachmentsInOrder) {
  const auto first = std::make_shared<EmptyProvider>();
  const auto second = std::make_shared<EmptyProvider>();
  const NSExtensionItem item({first, second});
  ASSERT_EQ(item.attachments().size(), 2U);
  EXPECT_EQ(item.attachments()[0], first);
  EXPECT_EQ(item.attachments()[1], second);
}

TEST(ExtensionItem, MayHaveNoAttachments) { EXPECT_TRUE(NSExtensionItem({}).attachments().empty()); }

TEST(ExtensionItem, IsToldFromOtherObjectsOfARequest) {
  const NSExtensionContext::InputItems items = {
      std::make_shared<NSObject>(),
      std::make_shared<NSExtensionItem>(std::vector<std::shared_ptr<NSItemProvider>>())};
  EXPECT_EQ(dynamic_cast<const NSExtensionItem*>(items[0].get()), nullptr);
  EXPECT_NE(dynamic_cast<const NSExtensionItem*>(items[1].get()), nullptr);
}

}  // namespace
}  // namespace ostra
