#include "platform/appkit/save_place.h"

#include <gtest/gtest.h>

namespace ostra {
namespace {

NSSavePanel panelOf(const std::string& name, std::vector<UTType> types) {
  NSSavePanel panel;
  panel.setNameFieldStringValue(name);
  panel.setAllowedContentTypes(std::move(types));
  return panel;
}

TEST(SavePlace, KeepsAnExtensionOfAnAllowedTypeInAnyCase) {
  const NSSavePanel panel = panelOf("a.jpg", {UTType::jpeg()});
  EXPECT_EQ(placeOfAllowedType(panel, "/x/b.JPEG"), "/x/b.JPEG");
  EXPECT_EQ(placeOfAllowedType(panel, "/x/b.jpg"), "/x/b.jpg");
}

TEST(SavePlace, PutsTheProposedExtensionAfterAnother) {
  const NSSavePanel panel = panelOf("a.jpg", {UTType::jpeg()});
  EXPECT_EQ(placeOfAllowedType(panel, "/x/b"), "/x/b.jpg");
  EXPECT_EQ(placeOfAllowedType(panel, "/x/b.png"), "/x/b.png.jpg");
}

TEST(SavePlace, TakesTheTypesOwnExtensionWhenTheProposedNameHasNoneThatIsAllowed) {
  EXPECT_EQ(placeOfAllowedType(panelOf("a", {UTType::png()}), "/x/b"), "/x/b.png");
  EXPECT_EQ(placeOfAllowedType(panelOf("a.jpg", {UTType::png()}), "/x/b"), "/x/b.png");
}

TEST(SavePlace, LeavesEveryNameWhereEveryTypeIsAllowed) {
  EXPECT_EQ(placeOfAllowedType(panelOf("a.jpg", {}), "/x/b"), "/x/b");
}

}  // namespace
}  // namespace ostra
