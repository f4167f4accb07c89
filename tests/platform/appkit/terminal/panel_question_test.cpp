#include "platform/appkit/terminal/panel_question.h"

#include <deque>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/appkit/button.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/stack_view.h"
#include "platform/appkit/terminal/choice_question.h"
#include "platform/appkit/text_field.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PanelQuestion : public testing::Test {
 protected:
  PanelQuestion() {
    for (const char* title : {"Blue", "Dark Red", "Green"}) popup_->addItem({title, tag_++, false});
    popup_->addItem(NSMenuItem::separatorItem());
    for (const char* title : {"Redwood", "Dark Rose"}) popup_->addItem({title, tag_++, false});
    go_->setKeyEquivalent(kReturnKey);
    go_->setAction([this] { pressed_ += "go " + popup_->selectedItem()->title; });
    stop_->setKeyEquivalent(kEscapeKey);
    stop_->setAction([this] { pressed_ += "stop"; });
  }

  /// What was pressed when somebody gives these answers and then no more.
  std::string ask(std::deque<std::string> answers) {
    heard_.clear();
    pressed_.clear();
    askPanel(root_, "Paint", 40, [&](const std::string& question) -> std::optional<std::string> {
      heard_.push_back(question);
      if (answers.empty()) return std::nullopt;
      std::string next = answers.front();
      answers.pop_front();
      return next;
    });
    return pressed_;
  }

  int tag_ = 0;
  std::shared_ptr<NSPopUpButton> popup_ = std::make_shared<NSPopUpButton>();
  std::shared_ptr<NSButton> go_ = std::make_shared<NSButton>("Go"),
                            stop_ = std::make_shared<NSButton>("Leave");
  std::shared_ptr<NSView> root_ = NSStackView::stackViewWithViews(
      {NSTextField::labelWithString("Paint"),
       NSStackView::stackViewWithViews({NSTextField::labelWithString("Colour:"), popup_}),
       NSTextField::wrappingLabelWithString("A few words that are too long for a line of forty characters."),
       NSStackView::stackViewWithViews({stop_, go_})});
  std::vector<std::string> heard_;
  std::string pressed_;
};

TEST_F(PanelQuestion, ShowsTitleTextsAndTheNumberedItemsOnce) {
  ask({"x"});
  ASSERT_EQ(heard_.size(), 2u);
  EXPECT_EQ(heard_[0],
            "Paint\n"
            "A few words that are too long for a\n"
            "line of forty characters.\n"
            " 1  Blue\n"
            " 2  Dark Red\n"
            " 3  Green\n"
            "    ----\n"
            " 4  Redwood\n"
            " 5  Dark Rose\n"
            "Type a number or the beginning of a name, or q for “Leave”.\n"
            "Colour [Blue]: ");
  EXPECT_EQ(heard_[1], "There is no “x” in the list.\nColour [Blue]: ");
}

TEST_F(PanelQuestion, ProposesTheChoiceForAnEmptyLine) {
  popup_->selectItemWithTag(3);
  EXPECT_EQ(ask({""}), "go Redwood");
  EXPECT_THAT(heard_[0], HasSubstr("Colour [Redwood]: "));
}

TEST_F(PanelQuestion, TakesANumberThatLeavesSeparatorsOut) {
  EXPECT_EQ(ask({"4"}), "go Redwood");
  EXPECT_EQ(ask({" 1 "}), "go Blue");
}

TEST_F(PanelQuestion, TakesANameInAnyLetterCaseOrItsBeginning) {
  EXPECT_EQ(ask({"GREEN"}), "go Green");
  EXPECT_EQ(ask({"dark ro"}), "go Dark Rose");
  EXPECT_EQ(ask({"red"}), "go Redwood");  // "Dark Red" only holds it
}

TEST_F(PanelQuestion, ShowsTheItemsThatAnAnswerMayMean) {
  EXPECT_EQ(ask({"dark", "2"}), "go Dark Red");
  EXPECT_EQ(heard_[1], " 2  Dark Red\n 5  Dark Rose\nColour [Blue]: ");
}

// A part in the middle is too little to begin to rewrite pictures.
TEST_F(PanelQuestion, ShowsAnItemThatOnlyHoldsTheAnswer) {
  EXPECT_EQ(ask({"rose", "5"}), "go Dark Rose");
  EXPECT_EQ(heard_[1], " 5  Dark Rose\nColour [Blue]: ");
}

TEST_F(PanelQuestion, AsksAgainForNumbersThatAreNone) {
  EXPECT_EQ(ask({"0", "6", "-1", "99999999999999999999999", "3"}), "go Green");
  EXPECT_EQ(heard_.size(), 5u);
}

TEST_F(PanelQuestion, PressesTheEscapeButtonForQEscapeAndTheEnd) {
  EXPECT_EQ(ask({"q"}), "stop");
  EXPECT_EQ(ask({"Q"}), "stop");
  EXPECT_EQ(ask({"\x1b"}), "stop");
  EXPECT_EQ(ask({}), "stop");
  EXPECT_EQ(ask({"x", "y"}), "stop");
}

TEST_F(PanelQuestion, AsksAgainForAnEmptyLineWithoutAChoice) {
  popup_->deselect();
  EXPECT_EQ(ask({"", "2"}), "go Dark Red");
  EXPECT_THAT(heard_[0], HasSubstr("\nColour: "));
}

TEST_F(PanelQuestion, LeavesDisabledPopUpsAlone) {
  popup_->setEnabled(false);
  EXPECT_EQ(ask({}), "go Blue");
  EXPECT_THAT(heard_, IsEmpty());
}

TEST(ChoiceQuestion, PrefersTheExactTitle) {
  const std::vector<NSMenuItem> items = {{"gray", 0, false}, {"Gray", 1, false}, {"Gray 2", 2, false}};
  EXPECT_THAT(meantBy("Gray", items).positions, ElementsAre(1));
  EXPECT_TRUE(meantBy("Gray", items).certain);
  EXPECT_THAT(meantBy("GRAY", items).positions, ElementsAre(0, 1));
  EXPECT_FALSE(meantBy("GRAY", items).certain);
}

TEST(ChoiceQuestion, AlignsTheNumbersOfHundreds) {
  std::vector<NSMenuItem> items(100, NSMenuItem{"x", 0, false});
  EXPECT_THAT(numberedList(items), HasSubstr("\n  99  x\n 100  x\n"));
}

}  // namespace
}  // namespace ostra
