#include "host/user_interface.h"

#include <csignal>

#include <gtest/gtest.h>

#include "host/stop_signals.h"

namespace ostra {
namespace {

TEST(ChooseDisplay, DoesAsItIsTold) {
  const Surroundings everything{.inputIsTerminal = true, .errorsAreTerminal = true, .hasDisplay = true};
  EXPECT_EQ(chooseDisplay(UserInterfaceChoice::desktop, everything), Display::windows);
  EXPECT_EQ(chooseDisplay(UserInterfaceChoice::none, everything), Display::lines);
  EXPECT_EQ(chooseDisplay(UserInterfaceChoice::terminal, {}), Display::terminal);
}

TEST(ChooseDisplay, TakesATerminalOnlyWhenBothStreamsAreOne) {
  const auto choice = UserInterfaceChoice::automatic;
  EXPECT_EQ(chooseDisplay(choice, {true, true, true}), Display::terminal);
  EXPECT_EQ(chooseDisplay(choice, {true, true, false}), Display::terminal);
  EXPECT_EQ(chooseDisplay(choice, {true, false, true}), Display::windows);
  EXPECT_EQ(chooseDisplay(choice, {false, true, true}), Display::windows);
  EXPECT_EQ(chooseDisplay(choice, {false, true, false}), Display::lines);
}

TEST(UserInterface, HasAnApplicationOnlyWhereSomebodyIsShownSomething) {
  {
    const UserInterface lines(Display::lines);
    EXPECT_EQ(NSApplication::shared(), nullptr);
  }
  {
    const UserInterface terminal(Display::terminal);
    EXPECT_NE(NSApplication::shared(), nullptr);
  }
  EXPECT_EQ(NSApplication::shared(), nullptr);
}

TEST(UserInterface, HasAnApplicationForWindowsBeforeAnyIsLoaded) {
  const UserInterface windows(Display::windows);
  EXPECT_NE(NSApplication::shared(), nullptr);
  NSApplication::shared()->activateIgnoringOtherApps(true);
}

std::string shownOf(const NSAlert& alert) {
  testing::internal::CaptureStderr();
  Service<Renderer>::current().run(alert);
  return testing::internal::GetCapturedStderr();
}

TEST(UserInterface, ReportsNothingAfterASignal) {
  NSAlert alert;
  alert.messageText = "Title";
  const UserInterface lines(Display::lines);
  EXPECT_EQ(shownOf(alert), "Title\n");
  const StopSignals signals;
  std::raise(SIGTERM);
  EXPECT_EQ(shownOf(alert), "");
}

TEST(UserInterface, PresentsNothingAfterASignal) {
  const UserInterface lines(Display::lines);
  const StopSignals signals;
  std::raise(SIGTERM);
  EXPECT_FALSE(Service<Renderer>::current().present(nullptr, "Title"));
}

}  // namespace
}  // namespace ostra
