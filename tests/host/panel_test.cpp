#include "host/panel.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/stop_signals.h"
#include "host/usage_error.h"
#include "platform/appkit/button.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/foundation/service.h"
#include "tests/doubles/extension_context.h"
#include "tests/doubles/renderer.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A panel with a pop-up that says what became of it.
struct Chooser : NSViewController {
  explicit Chooser(test::CallLog& calls) : log(calls) {}
  void loadView() override {
    log.add("view");
    popup->addItem({"Blue", 40, false});
    popup->addItem(NSMenuItem::separatorItem());
    for (const char* title : {"Red", "RED", "Grün", "Grau"})
      popup->addItem({title, static_cast<int>(popup->items().size()), false});
    const auto root = std::make_shared<NSView>();
    const auto go = std::make_shared<NSButton>("Go"), stop = std::make_shared<NSButton>("Stop");
    go->setKeyEquivalent(kReturnKey);
    go->setAction([this] { log.add("go " + popup->selectedItem()->title); });
    stop->setKeyEquivalent(kEscapeKey);
    stop->setAction([this] { log.add("stop"); });
    for (const std::shared_ptr<NSView>& view : std::vector<std::shared_ptr<NSView>>{stop, popup, go})
      root->addSubview(view);
    setView(root);
  }
  test::CallLog& log;
  std::shared_ptr<NSPopUpButton> popup = std::make_shared<NSPopUpButton>();
};

class PanelTest : public testing::Test {
 protected:
  PanelTest() { chooser_->beginRequestWithExtensionContext(context_); }

  std::string refusal(const std::string& name) {
    try {
      answerPanel(chooser_, name);
      return "answered";
    } catch (const UsageError& failure) {
      return failure.what();
    }
  }

  test::CallLog log_;
  std::shared_ptr<test::RecordingExtensionContext> context_ =
      std::make_shared<test::RecordingExtensionContext>(log_);
  std::shared_ptr<Chooser> chooser_ = std::make_shared<Chooser>(log_);
};

TEST_F(PanelTest, IsAnsweredWithTheExactTitle) {
  answerPanel(chooser_, "RED");
  EXPECT_THAT(log_.calls(), ElementsAre("view", "go RED"));
}

TEST_F(PanelTest, IsAnsweredWithTheOnlyTitleThatIsTheSameLetterCaseAside) {
  answerPanel(chooser_, "GRÜN");
  EXPECT_THAT(log_.calls(), ElementsAre("view", "go Grün"));
}

TEST_F(PanelTest, IsNotAnsweredWithATitleThatCouldBeTwo) {
  EXPECT_EQ(refusal("red"), "There is no profile “red”. Near it: “Red”, “RED”. See “ostra profiles”.");
  EXPECT_THAT(log_.calls(), ElementsAre("view", "stop"));
}

TEST_F(PanelTest, IsCancelledForAnUnknownNameWhichIsToldWithNearOnes) {
  EXPECT_EQ(refusal("Bleu"), "There is no profile “Bleu”. Near it: “Blue”. See “ostra profiles”.");
  EXPECT_EQ(refusal("Nonsense"), "There is no profile “Nonsense”. See “ostra profiles”.");
  EXPECT_THAT(log_.callsBeginningWith({"go"}), IsEmpty());
}

TEST_F(PanelTest, IsNotAnsweredWithASeparator) { EXPECT_THAT(refusal(""), HasSubstr("no profile “”")); }

TEST_F(PanelTest, ListsItsChoicesWithAnEmptyLineForASeparator) {
  EXPECT_EQ(panelChoices(chooser_), "Blue\n\nRed\nRED\nGrün\nGrau\n");
}

TEST_F(PanelTest, IsShownUnderTheTitle) {
  test::RecordingRenderer renderer(log_);
  const Service<Renderer>::Override override(renderer);
  showPanel(chooser_, "Paint");
  EXPECT_THAT(log_.calls(), ElementsAre("present “Paint”"));
  EXPECT_THAT(renderer.presented, ElementsAre(chooser_));
}

TEST_F(PanelTest, ThatNobodySeesCancelsTheRequestAndDescribesNothing) {
  try {
    showPanel(chooser_, "Paint");
    ADD_FAILURE() << "shown";
  } catch (const UsageError& failure) {
    EXPECT_THAT(failure.what(), HasSubstr("--profile NAME"));
    EXPECT_THAT(failure.what(), HasSubstr("ostra profiles"));
  }
  EXPECT_THAT(log_.calls(), ElementsAre("cancel 3072"));
}

TEST_F(PanelTest, IsLeftAloneAfterASignal) {
  const StopSignals signals;
  std::raise(SIGTERM);
  showPanel(chooser_, "Paint");
  EXPECT_THAT(log_.calls(), IsEmpty());
}

}  // namespace
}  // namespace ostra
