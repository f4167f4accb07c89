#include "platform/foundation/printable.h"

#include <gtest/gtest.h>

namespace ostra {
namespace {

TEST(Printable, KeepsTextInAnyScriptAndLineFeeds) {
  EXPECT_EQ(printable("Zürich 東京\nb.png"), "Zürich 東京\nb.png");
}

TEST(Printable, TakesAwayWhatATerminalWouldObey) {
  EXPECT_EQ(printable("a\033[2Jb\rc\td\x7F"), "a?[2Jb?c?d?");
  EXPECT_EQ(printable("a\xC2\x9B"
                      "2Jb"),
            "a?2Jb");
}

TEST(Printable, LineHasNoSecondOne) { EXPECT_EQ(printableLine("a\nb\033.png"), "a?b?.png"); }

TEST(Printable, LeavesBytesThatAreNoText) {
  EXPECT_EQ(printable("\xFF\xC2"), "\xFF\xC2");
  EXPECT_EQ(printable("\xC2\xA0"), "\xC2\xA0");
}

}  // namespace
}  // namespace ostra
