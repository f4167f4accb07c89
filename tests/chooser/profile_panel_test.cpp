// What the panel looks like and what it offers.
#include <algorithm>

#include "platform/appkit/stack_view.h"
#include "tests/chooser/panel_fixture.h"

namespace ostra::test {
namespace {

using testing::ElementsAre;

using Strings = std::vector<std::string>;

const Strings kBuiltInNames = {
    "sRGB IEC61966-2.1",         "Display P3", "Adobe RGB (1998)", "ProPhoto RGB (ROMM)",
    "Rec. 2020 (ITU-R BT.2020)", "DCI-P3",     "Linear sRGB",      "Generic Gray Gamma 2.2"};

class ProfilePanel : public PanelFixture {
 protected:
  std::shared_ptr<NSStackView> stack() {
    return std::dynamic_pointer_cast<NSStackView>(view().subviews().at(0));
  }
  std::shared_ptr<NSView> row(std::size_t index) { return stack()->subviews().at(index); }
};

TEST_F(ProfilePanel, IsAPlainViewOfAFixedSizeWithOneColumn) {
  EXPECT_EQ(view().frame(), (NSRect{0, 0, {460, 170}}));
  EXPECT_EQ(controller_->preferredContentSize(), (CGSize{460, 170}));
  ASSERT_EQ(view().subviews().size(), 1u);
  ASSERT_NE(stack(), nullptr);
  EXPECT_EQ(stack()->orientation(), NSUserInterfaceLayoutOrientation::vertical);
  EXPECT_EQ(stack()->alignment(), NSStackAlignment::leading);
  EXPECT_EQ(stack()->spacing(), 12);
  EXPECT_FALSE(stack()->translatesAutoresizingMaskIntoConstraints());
  EXPECT_EQ(stack()->subviews().size(), 4u);
}

TEST_F(ProfilePanel, HasATitleInBoldALittleLargerThanText) {
  const auto title = std::dynamic_pointer_cast<NSTextField>(row(0));
  ASSERT_NE(title, nullptr);
  EXPECT_EQ(title->stringValue(), "Convert Color Profile");
  EXPECT_EQ(title->font(), NSFont::boldSystemFontOfSize(NSFont::systemFontSize() + 1));
  EXPECT_FALSE(title->wraps());
}

TEST_F(ProfilePanel, AsksInARowForTheProfile) {
  const auto asked = std::dynamic_pointer_cast<NSStackView>(row(1));
  ASSERT_NE(asked, nullptr);
  EXPECT_EQ(asked->orientation(), NSUserInterfaceLayoutOrientation::horizontal);
  EXPECT_EQ(asked->spacing(), 8);
  ASSERT_EQ(asked->subviews().size(), 2u);
  EXPECT_EQ(std::dynamic_pointer_cast<NSTextField>(asked->subviews()[0])->stringValue(), "Profile:");
  EXPECT_EQ(asked->subviews()[1].get(), &popup());
  EXPECT_FALSE(popup().translatesAutoresizingMaskIntoConstraints());
  EXPECT_EQ(popup().frame(), NSRect{});
}

TEST_F(ProfilePanel, ExplainsInSmallSecondaryText) {
  const auto summary = std::dynamic_pointer_cast<NSTextField>(row(2));
  ASSERT_NE(summary, nullptr);
  EXPECT_EQ(summary->stringValue(),
            "The selected images are converted to the chosen profile and rewritten in place (formats ImageIO "
            "cannot write, such as WebP or RAW, are saved next to the original as PNG).");
  EXPECT_TRUE(summary->wraps());
  EXPECT_EQ(summary->font(), NSFont::systemFontOfSize(NSFont::smallSystemFontSize()));
  EXPECT_EQ(summary->textColor(), NSColor::secondaryLabelColor);
}

TEST_F(ProfilePanel, HasItsButtonsAtTheRightBehindTheSpinner) {
  const auto buttons = std::dynamic_pointer_cast<NSStackView>(row(3));
  ASSERT_NE(buttons, nullptr);
  EXPECT_EQ(buttons->orientation(), NSUserInterfaceLayoutOrientation::horizontal);
  EXPECT_EQ(buttons->spacing(), 8);
  ASSERT_EQ(buttons->subviews().size(), 4u);
  EXPECT_EQ(buttons->subviews()[0].get(), &spinner());
  const NSView& spacer = *buttons->subviews()[1];
  EXPECT_EQ(typeid(spacer), typeid(NSView));
  EXPECT_EQ(buttons->subviews()[2].get(), &cancelButton());
  EXPECT_EQ(buttons->subviews()[3].get(), &convertButton());
  EXPECT_EQ(cancelButton().title(), "Cancel");
  EXPECT_EQ(convertButton().title(), "Convert");
}

TEST_F(ProfilePanel, AnswersToReturnAndEscape) {
  view();
  EXPECT_EQ(convertButton().keyEquivalent(), "\r");
  EXPECT_EQ(cancelButton().keyEquivalent(), std::string(1, char{27}));
}

TEST_F(ProfilePanel, HasASmallSpinnerThatIsHiddenWhileNothingGoesOn) {
  EXPECT_EQ(spinner().style(), NSProgressIndicatorStyle::spinning);
  EXPECT_EQ(spinner().controlSize(), NSControlSize::small);
  EXPECT_FALSE(spinner().isDisplayedWhenStopped());
  EXPECT_FALSE(spinner().isAnimating());
}

TEST_F(ProfilePanel, IsHeldByExactlyEightConstraints) {
  std::vector<NSLayoutConstraint> constraints;
  for (const auto& each : viewsBelow(controller_->view())) {
    constraints.insert(constraints.end(), each->constraints().begin(), each->constraints().end());
  }
  NSView& root = view();
  NSView &column = *stack(), &profileRow = *row(1), &summary = *row(2), &buttonRow = *row(3);
  EXPECT_THAT(constraints, testing::UnorderedElementsAre(
                               NSLayoutConstraint{column.leadingAnchor(), root.leadingAnchor(), 20},
                               NSLayoutConstraint{column.trailingAnchor(), root.trailingAnchor(), -20},
                               NSLayoutConstraint{column.topAnchor(), root.topAnchor(), 18},
                               NSLayoutConstraint{column.bottomAnchor(), root.bottomAnchor(), -18},
                               NSLayoutConstraint{profileRow.trailingAnchor(), column.trailingAnchor(), 0},
                               NSLayoutConstraint{buttonRow.trailingAnchor(), column.trailingAnchor(), 0},
                               NSLayoutConstraint{popup().trailingAnchor(), profileRow.trailingAnchor(), 0},
                               NSLayoutConstraint{summary.widthAnchor(), column.widthAnchor(), 0}));
}

TEST_F(ProfilePanel, OffersTheFixedProfilesWithoutASeparatorWhereNoneIsInstalled) {
  EXPECT_EQ(items(), kBuiltInNames);
}

TEST_F(ProfilePanel, OffersTheInstalledOnesBehindOneSeparator) {
  install("Paper");
  install("Canvas");
  Strings expected = kBuiltInNames;
  expected.insert(expected.end(), {"-", "Canvas", "Paper"});
  EXPECT_EQ(items(), expected);
}

TEST_F(ProfilePanel, PrefersTheFixedProfileToAnInstalledOneOfItsNameInAnyLetterCase) {
  install("srgb iec61966-2.1");
  install("DISPLAY P3");
  EXPECT_EQ(items(), kBuiltInNames);
  install("Paper");
  controller_ = std::make_shared<OstraQuickActionProfileViewController>();
  EXPECT_EQ(items().size(), kBuiltInNames.size() + 2);
  EXPECT_EQ(items().back(), "Paper");
}

TEST_F(ProfilePanel, DropsOnlyInstalledProfilesWhoseFixedOneCouldBeMade) {
  bench_.graphics.missingSpaces = {std::string(kCGColorSpaceDisplayP3)};
  install("Display P3");
  EXPECT_EQ(items().back(), "Display P3");
}

TEST_F(ProfilePanel, PutsTheSeparatorBehindTheFixedProfilesThatCouldBeMade) {
  bench_.graphics.missingSpaces = {std::string(kCGColorSpaceDisplayP3)};
  install("Paper");
  install("Canvas");
  const auto titles = items();
  EXPECT_EQ(std::count(titles.begin(), titles.end(), "-"), 1);
  EXPECT_EQ(titles.at(7), "-");
  EXPECT_EQ(titles.at(8), "Canvas");
}

// Positions count the separator, tags do not.
TEST_F(ProfilePanel, TagsEachItemWithItsIndexAmongTheProfiles) {
  install("Paper");
  std::vector<int> tags;
  for (const NSMenuItem& item : popup().items()) {
    if (!item.isSeparator) tags.push_back(item.tag);
  }
  EXPECT_THAT(tags, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8));
}

TEST_F(ProfilePanel, ChoosesTheFirstProfileWhereNothingIsRemembered) {
  EXPECT_EQ(choice(), "sRGB IEC61966-2.1");
}

TEST_F(ProfilePanel, ChoosesTheFirstThatCouldBeMade) {
  bench_.graphics.missingSpaces = {std::string(kCGColorSpaceSRGB)};
  EXPECT_EQ(choice(), "Display P3");
}

TEST_F(ProfilePanel, ChoosesTheRememberedProfile) {
  defaults_.settings[kLastProfileKey] = "Adobe RGB (1998)";
  EXPECT_EQ(choice(), "Adobe RGB (1998)");
}

TEST_F(ProfilePanel, ChoosesTheRememberedProfileBehindTheSeparatorToo) {
  install("Canvas");
  install("Paper");
  defaults_.settings[kLastProfileKey] = "Canvas";
  EXPECT_EQ(choice(), "Canvas");
}

TEST_F(ProfilePanel, ChoosesTheFirstWhereTheRememberedOneIsGoneOrOnlyNearlyTheSame) {
  for (const char* name : {"Uninstalled", "display p3", "Display P3 ", ""}) {
    defaults_.settings[kLastProfileKey] = name;
    controller_ = std::make_shared<OstraQuickActionProfileViewController>();
    EXPECT_EQ(choice(), "sRGB IEC61966-2.1") << name;
  }
}

TEST_F(ProfilePanel, AsksEachSourceOnceAndTheFixedOneFirst) {
  view();
  view();
  const auto asked = log().callsBeginningWith({"space kCGColorSpaceSRGB", "enumerate", "read setting"});
  EXPECT_EQ(asked, (Strings{"space kCGColorSpaceSRGB", "enumerate profiles",
                            "read setting OstraQuickActionLastProfile"}));
}

TEST_F(ProfilePanel, SurvivesThatThereIsNoProfileAtAll) {
  for (const char* name : {"SRGB", "DisplayP3", "AdobeRGB1998", "ROMMRGB", "ITUR_2020", "DCIP3", "LinearSRGB",
                           "GenericGrayGamma2_2"}) {
    bench_.graphics.missingSpaces.insert(std::string("kCGColorSpace") + name);
  }
  EXPECT_TRUE(items().empty());
  EXPECT_EQ(choice(), "none");
}

}  // namespace
}  // namespace ostra::test
