#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/progress_indicator.h"
#include "platform/appkit/stack_view.h"
#include "platform/appkit/text_field.h"
#include "platform/appkit/view_controller.h"
#include "platform/appkit/view_search.h"

namespace ostra {
namespace {

TEST(View, KnowsItsSubviewsAndTheyIt) {
  const auto root = std::make_shared<NSView>();
  const auto child = std::make_shared<NSView>();
  root->addSubview(child);
  EXPECT_EQ(child->superview(), root);
  EXPECT_THAT(root->subviews(), testing::ElementsAre(child));
  EXPECT_EQ(root->superview(), nullptr);
}

TEST(Constraints, AreHeldByTheNearestCommonAncestor) {
  const auto root = std::make_shared<NSView>(), left = std::make_shared<NSView>(),
             right = std::make_shared<NSView>(), deep = std::make_shared<NSView>();
  root->addSubview(left);
  root->addSubview(right);
  left->addSubview(deep);
  NSLayoutConstraint::activateConstraints(
      {deep->topAnchor().constraintEqualToAnchor(right->bottomAnchor(), 3),
       deep->widthAnchor().constraintEqualToAnchor(left->widthAnchor())});
  EXPECT_EQ(root->constraints().size(), 1u);
  EXPECT_EQ(left->constraints().size(), 1u);
  EXPECT_EQ(root->constraints()[0].constant, 3);
  const auto stranger = std::make_shared<NSView>();
  EXPECT_THROW(NSLayoutConstraint::activateConstraints(
                   {deep->topAnchor().constraintEqualToAnchor(stranger->topAnchor())}),
               std::logic_error);
}

TEST(PopUpButton, ChoosesByTagWhereverSeparatorsStand) {
  NSPopUpButton popup;
  popup.addItem(NSMenuItem::separatorItem());
  EXPECT_EQ(popup.selectedItem(), nullptr);
  popup.addItem({"first", 0, false});
  popup.addItem(NSMenuItem::separatorItem());
  popup.addItem({"second", 1, false});
  EXPECT_EQ(popup.selectedItem()->title, "first");
  EXPECT_TRUE(popup.selectItemWithTag(1));
  EXPECT_EQ(popup.indexOfSelectedItem(), 3u);
  EXPECT_FALSE(popup.selectItemWithTag(7));
  EXPECT_EQ(popup.selectedItem()->title, "second");
  popup.removeAllItems();
  EXPECT_EQ(popup.selectedItem(), nullptr);
}

TEST(Controls, DoNothingWhileTheyAreDisabled) {
  NSButton button("Go");
  int pressed = 0;
  button.performClick();
  button.setAction([&pressed] { ++pressed; });
  button.performClick();
  button.setEnabled(false);
  button.performClick();
  EXPECT_EQ(pressed, 1);
}

TEST(Views, TellOfTheirChanges) {
  int changes = 0;
  const auto watch = [&changes](NSView& view) { view.setObserver([&changes] { ++changes; }); };
  NSButton button("Go");
  NSProgressIndicator indicator;
  const auto label = NSTextField::labelWithString("a");
  watch(button), watch(indicator), watch(*label);
  button.setEnabled(false);
  indicator.startAnimation();
  label->setStringValue("b");
  EXPECT_EQ(changes, 3);
}

TEST(ViewSearch, FindsViewsOfAKindInTheirOrder) {
  const auto one = std::make_shared<NSButton>("1"), two = std::make_shared<NSButton>("2");
  const auto inner = NSStackView::stackViewWithViews({one}),
             root = NSStackView::stackViewWithViews({inner, two});
  EXPECT_THAT(viewsOfKind<NSButton>(root), testing::ElementsAre(one, two));
  EXPECT_THAT(viewsBelow(root), testing::ElementsAre(root, inner, one, two));
}

TEST(ViewSearch, PressesTheButtonOfAKey) {
  const auto button = std::make_shared<NSButton>("Go");
  int pressed = 0;
  button->setKeyEquivalent(kReturnKey);
  button->setAction([&pressed] { ++pressed; });
  const auto root = NSStackView::stackViewWithViews({std::make_shared<NSButton>("Other"), button});
  EXPECT_TRUE(pressButtonWithKey(root, "\r"));
  EXPECT_FALSE(pressButtonWithKey(root, "\x1b"));
  EXPECT_EQ(pressed, 1);
}

TEST(ViewController, LoadsItsViewOnceAndOnlyWhenItIsAskedFor) {
  struct Controller : NSViewController {
    void loadView() override {
      calls += "load ";
      setView(std::make_shared<NSView>());
    }
    void viewDidLoad() override { calls += "loaded "; }
    std::string calls;
  };
  const auto controller = std::make_shared<Controller>();
  controller->beginRequestWithExtensionContext(nullptr);
  EXPECT_EQ(controller->calls, "");
  controller->view();
  controller->view();
  EXPECT_EQ(controller->calls, "load loaded ");
}

}  // namespace
}  // namespace ostra
