#include "platform/appkit/terminal/terminal_renderer.h"

#include <chrono>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include "platform/appkit/button.h"
#include "platform/appkit/pop_up_button.h"
#include "platform/appkit/stack_view.h"
#include "platform/appkit/text_field.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

/// A terminal with somebody in front of it who has typed already.
class TerminalTest : public testing::Test {
 protected:
  TerminalTest() {
    int keyboardAndScreen = -1, line = -1;
    char name[100] = {};
    winsize size{24, 40, 0, 0};
    if (openpty(&keyboardAndScreen, &line, name, nullptr, &size) != 0)
      throw std::runtime_error("no terminal");
    person_ = UniqueFd(keyboardAndScreen);
    line_ = UniqueFd(line);
    name_ = name;
    termios mode{};
    tcgetattr(line_.get(), &mode);
    mode.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    mode.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    tcsetattr(line_.get(), TCSANOW, &mode);
    fcntl(person_.get(), F_SETFL, O_NONBLOCK);
  }

  void type(const std::string& keys) {
    ASSERT_EQ(write(person_.get(), keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  /// What is new on the screen.
  std::string screen() {
    std::string text(65536, '\0');
    const ssize_t size = read(person_.get(), text.data(), text.size());
    text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return text;
  }

  UniqueFd person_, line_;
  std::string name_;
};

NSSavePanel panelFor(const std::string& folder) {
  NSSavePanel panel;
  panel.setTitle("Title");
  panel.setMessage("Message");
  panel.setNameFieldStringValue("a.png");
  panel.setDirectoryURL(URL::fileURLWithPath(folder));
  return panel;
}

TEST_F(TerminalTest, AsksOnTheTerminalAndTakesTheAnswerFromIt) {
  const test::TemporaryFolder folder;
  TerminalRenderer renderer(name_);
  type(folder.path("b.png") + "\n");
  const SavePanelAnswer answer = renderer.run(panelFor(folder.path()));
  EXPECT_EQ(answer.response, NSModalResponseOK);
  ASSERT_TRUE(answer.url);
  EXPECT_EQ(answer.url->path(), folder.path("b.png"));
  EXPECT_EQ(screen(), "Title\nMessage\nSave as [" + folder.path("a.png") + "]: ");
}

TEST_F(TerminalTest, CountsTheEndOfTheInputAsCancel) {
  TerminalRenderer renderer(name_);
  type("\x04");
  const SavePanelAnswer answer = renderer.run(panelFor("/nowhere"));
  EXPECT_EQ(answer.response, NSModalResponseCancel);
  EXPECT_FALSE(answer.url);
}

TEST_F(TerminalTest, AsksNothingMoreAfterTheEndOfTheInput) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("a.png"), "picture");
  TerminalRenderer renderer(name_);
  type("\n\x04\ny\n");
  EXPECT_EQ(renderer.run(panelFor(folder.path())).response, NSModalResponseCancel);
}

/// A controller with one question.
struct Questioner : NSViewController {
  void loadView() override {
    for (const char* title : {"Blue", "Red"})
      popup->addItem({title, static_cast<int>(popup->items().size()), false});
    go->setKeyEquivalent(kReturnKey);
    go->setAction([this] { pressed = "go " + popup->selectedItem()->title; });
    stop->setKeyEquivalent(kEscapeKey);
    stop->setAction([this] { pressed = "stop"; });
    setView(NSStackView::stackViewWithViews({NSTextField::labelWithString("Colour:"), popup, stop, go}));
  }
  std::shared_ptr<NSPopUpButton> popup = std::make_shared<NSPopUpButton>();
  std::shared_ptr<NSButton> go = std::make_shared<NSButton>("Go"), stop = std::make_shared<NSButton>("Stop");
  std::string pressed;
};

TEST_F(TerminalTest, PresentsAControllerAsAQuestion) {
  TerminalRenderer renderer(name_);
  const auto controller = std::make_shared<Questioner>();
  type("red\n");
  EXPECT_TRUE(renderer.present(controller, "Paint"));
  EXPECT_EQ(controller->pressed, "go Red");
  EXPECT_EQ(screen(),
            "Paint\n 1  Blue\n 2  Red\nType a number or the beginning of a name, or q for “Stop”.\n"
            "Colour [Blue]: ");
}

TEST_F(TerminalTest, ShowsNoControlCharacterOfAnItem) {
  TerminalRenderer renderer(name_);
  const auto controller = std::make_shared<Questioner>();
  controller->popup->addItem({"a\033[2Jb", 7, false});
  type("q\n");
  renderer.present(controller, "Paint");
  EXPECT_EQ(controller->pressed, "stop");
  EXPECT_NE(screen().find("a?[2Jb"), std::string::npos);
}

TEST_F(TerminalTest, EndsAQuestionThatIsWithdrawn) {
  TerminalRenderer renderer(name_);
  const auto controller = std::make_shared<Questioner>();
  std::thread other([&renderer] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    renderer.withdraw();
  });
  EXPECT_TRUE(renderer.present(controller, "Paint"));
  other.join();
  EXPECT_EQ(controller->pressed, "stop");
  EXPECT_EQ(renderer.run(panelFor("/nowhere")).response, NSModalResponseCancel);
}

// The signal may have come between the last look and the question.
TEST_F(TerminalTest, AsksNothingThatIsWithdrawnAlready) {
  TerminalRenderer renderer(name_);
  renderer.withdraw();
  const auto controller = std::make_shared<Questioner>();
  type("red\n");
  renderer.present(controller, "Paint");
  EXPECT_EQ(controller->pressed, "stop");
}

TEST(TerminalRenderer, PresentsNothingWithoutATerminal) {
  TerminalRenderer renderer("/dev/null/nothing");
  const auto controller = std::make_shared<Questioner>();
  EXPECT_FALSE(renderer.present(controller, "Paint"));
  EXPECT_EQ(controller->pressed, "");
}

TEST(TerminalRenderer, CancelsASavePanelWithoutATerminal) {
  TerminalRenderer renderer("/dev/null/nothing");
  EXPECT_EQ(renderer.run(panelFor("/nowhere")).response, NSModalResponseCancel);
  renderer.progress({1, 3, "a.png", ""});
  renderer.beep();
}

TEST_F(TerminalTest, DrawsProgressOverItselfAndTakesItAway) {
  TerminalRenderer renderer(name_);
  renderer.progress({0, 2, "a.png", ""});
  EXPECT_EQ(screen(), "\r\033[K[....................] 0 of 2  a.png");
  renderer.progress({1, 2, "b\033.png", ""});
  EXPECT_EQ(screen(), "\r\033[K[##########..........] 1 of 2  b?.png");
  renderer.progress({2, 2, "", ""});
  EXPECT_EQ(screen(), "\r\033[K");
  renderer.progress({2, 2, "", ""});
  EXPECT_EQ(screen(), "");
}

TEST_F(TerminalTest, KeepsProgressOnOneLineOfTheTerminal) {
  TerminalRenderer renderer(name_);
  renderer.progress({0, 10, "ein sehr länglicher Name einer Datei.png", ""});
  EXPECT_EQ(screen(), "\r\033[K[....................] 0 of 10  ein seh");
  renderer.progress({0, 10, "ééééééééééé", ""});
  EXPECT_EQ(screen(), "\r\033[K[....................] 0 of 10  ééééééé");
}

TEST_F(TerminalTest, PrintsAnAlertToStandardErrorBelowNoProgress) {
  TerminalRenderer renderer(name_);
  renderer.progress({0, 2, "a.png", ""});
  screen();
  NSAlert alert;
  alert.messageText = "Title";
  alert.informativeText = "a.png: reason.";
  testing::internal::CaptureStderr();
  renderer.run(alert);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Title\n  a.png: reason.\n");
  EXPECT_EQ(screen(), "\r\033[K");
}

TEST_F(TerminalTest, Rings) {
  TerminalRenderer renderer(name_);
  renderer.beep();
  EXPECT_EQ(screen(), "\a");
}

}  // namespace
}  // namespace ostra
