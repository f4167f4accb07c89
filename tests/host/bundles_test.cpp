#include "host/bundles.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "front/kind.h"
#include "host/usage_error.h"
#include "platform/foundation/property_list.h"
#include "platform/types/ut_type.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using testing::HasSubstr;

class BundlesTest : public testing::Test {
 protected:
  void add(const std::string& name, const Dictionary& info) {
    std::filesystem::create_directory(folder_.path(name));
    const Bytes list = writePropertyList(info);
    test::writeFile(folder_.path(name + "/Info.plist"), ByteView(list));
  }
  test::TemporaryFolder folder_;
};

TEST_F(BundlesTest, AreListedByNameWithActionAndTitle) {
  add("b", {{"NIVEQuickAction", " grayscale-jpg\n"}, {"CFBundleDisplayName", "Gray"}});
  add("a", {{"NIVEQuickAction", "srgb"}, {"CFBundleDisplayName", "Narrow"}});
  add("c", {{"CFBundleDisplayName", "No action"}});
  EXPECT_EQ(bundleList(bundlesIn(folder_.path())), "srgb           Narrow\ngrayscale-jpg  Gray\n");
}

TEST_F(BundlesTest, AreFoundByTheirAction) {
  add("x",
      {{"NIVEQuickAction", "srgb"}, {"NSExtension", Dictionary{{"NSExtensionPrincipalClass", "Handler"}}}});
  EXPECT_EQ(bundleOfAction(folder_.path(), "srgb").principalClassName(), "Handler");
  EXPECT_THROW(bundleOfAction(folder_.path(), "SRGB"), UsageError);
  EXPECT_THROW(bundleOfAction(folder_.path(), "x"), UsageError);
  EXPECT_THROW(bundleOfAction(folder_.path("nothing"), "srgb"), UsageError);
}

TEST_F(BundlesTest, AreNotReadBesideTheOneThatIsCalledWhatItsActionIs) {
  add("srgb", {{"NIVEQuickAction", "srgb"}, {"CFBundleDisplayName", "Narrow"}});
  add("a", {{"NIVEQuickAction", "srgb"}, {"CFBundleDisplayName", "Other"}});
  add("invert", {{"NIVEQuickAction", "jpg"}});
  std::filesystem::create_directory(folder_.path("broken"));
  testing::internal::CaptureStderr();
  EXPECT_EQ(bundleOfAction(folder_.path(), "srgb").displayName(), "Narrow");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  testing::internal::CaptureStderr();
  EXPECT_EQ(bundleOfAction(folder_.path(), "jpg").folder, folder_.path("invert"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("broken"));
}

TEST_F(BundlesTest, AreReportedAndLeftOutWhereTheyCannotBeRead) {
  add("a", {{"NIVEQuickAction", "srgb"}});
  std::filesystem::create_directory(folder_.path("broken"));
  test::writeFile(folder_.path("broken/Info.plist"), "no property list");
  test::writeFile(folder_.path("file"), "no folder");
  testing::internal::CaptureStderr();
  EXPECT_EQ(bundlesIn(folder_.path()).size(), 1u);
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("broken"));
}

TEST_F(BundlesTest, AnswerEmptyWhereThePropertyListHoldsSomethingElse) {
  const Bundle bundle{"", {{"NIVEQuickAction", 3}, {"CFBundleDisplayName", true}, {"NSExtension", "text"}}};
  EXPECT_EQ(bundle.action() + bundle.displayName() + bundle.principalClassName(), "");
}

TEST_F(BundlesTest, AreAUsageErrorWhereTheFolderIsNone) {
  EXPECT_THROW(readBundle(folder_.path("nothing")), UsageError);
}

class OwnBundlesTest : public testing::Test {
 protected:
  std::vector<Bundle> bundles_ = bundlesIn(OSTRA_SOURCE_BUNDLES);
};

TEST_F(OwnBundlesTest, AreOneForEachKindUnderItsTitle) {
  ASSERT_EQ(bundles_.size(), allCases().size());
  for (const OstraQuickActionKind kind : allCases()) {
    const Bundle bundle = bundleOfAction(OSTRA_SOURCE_BUNDLES, rawValue(kind));
    EXPECT_EQ(bundle.displayName(), fallbackTitle(kind));
    EXPECT_EQ(bundle.info.at("CFBundleIdentifier"),
              Value("org.ostra.QuickActions." + std::string(rawValue(kind))));
  }
}

TEST_F(OwnBundlesTest, NameThePanelForTheProfileConversionAndTheHandlerForAllOthers) {
  for (const Bundle& bundle : bundles_) {
    const bool hasPanel = bundle.action() == "convert-color-profile";
    EXPECT_EQ(bundle.principalClassName(),
              hasPanel ? "OstraQuickActionProfileViewController" : "OstraQuickActionRequestHandler");
    const auto& extension = *bundle.info.at("NSExtension").get<Dictionary>();
    EXPECT_EQ(extension.at("NSExtensionPointIdentifier"),
              Value(hasPanel ? "com.apple.ui-services" : "com.apple.services"));
  }
}

TEST_F(OwnBundlesTest, TakeImagesAndMayWriteAPNGOrAJPEGBesideThem) {
  for (const Bundle& bundle : bundles_) {
    const auto& extension = *bundle.info.at("NSExtension").get<Dictionary>();
    const auto& attributes = *extension.at("NSExtensionAttributes").get<Dictionary>();
    const auto& rule = *attributes.at("NSExtensionActivationRule").get<Dictionary>();
    EXPECT_GT(rule.at("NSExtensionActivationSupportsImageWithMaxCount").number(), 4000);

    std::vector<std::string> related;
    for (const Value& each : *bundle.info.at("CFBundleDocumentTypes").get<Array>()) {
      const auto& type = *each.get<Dictionary>();
      if (type.at("NSIsRelatedItemType") != Value(true)) continue;
      for (const Value& identifier : *type.at("LSItemContentTypes").get<Array>()) {
        related.push_back(*identifier.get<std::string>());
      }
    }
    EXPECT_THAT(related, testing::ElementsAre(UTType::png().identifier(), UTType::jpeg().identifier()));
  }
}

}  // namespace
}  // namespace ostra
