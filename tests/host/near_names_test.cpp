#include "host/near_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> kNames = {"sRGB IEC61966-2.1", "Display P3", "DCI-P3", "Adobe RGB (1998)",
                                         "Gray"};

TEST(NearNames, DifferByFewLetters) {
  EXPECT_THAT(nearNames("Displai P3", kNames, 5), ElementsAre("Display P3"));
  EXPECT_THAT(nearNames("GREY", kNames, 5), ElementsAre("Gray"));
}

TEST(NearNames, HoldWhatWasTypedOrAreHeldByIt) {
  EXPECT_THAT(nearNames("p3", kNames, 5), ElementsAre("Display P3", "DCI-P3"));
  EXPECT_THAT(nearNames("adobe", kNames, 5), ElementsAre("Adobe RGB (1998)"));
  EXPECT_THAT(nearNames("dci-p3 theatre", kNames, 5), ElementsAre("DCI-P3"));
}

TEST(NearNames, StandWithTheNearestFirstAndAreNotMany) {
  EXPECT_THAT(nearNames("paper1", {"papers2", "paper2", "my paper1"}, 5),
              ElementsAre("my paper1", "paper2", "papers2"));
  EXPECT_THAT(nearNames("a", std::vector<std::string>(9, "a profile"), 5).size(), 5u);
}

TEST(NearNames, AreNoneForNothingAndForNonsense) {
  EXPECT_THAT(nearNames("", kNames, 5), IsEmpty());
  EXPECT_THAT(nearNames("wxyzwxyz", kNames, 5), IsEmpty());
  EXPECT_THAT(nearNames(std::string(100'000, 'x'), kNames, 5), IsEmpty());
}

}  // namespace
}  // namespace ostra
