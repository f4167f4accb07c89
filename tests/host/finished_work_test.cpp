#include "host/finished_work.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/foundation/service.h"
#include "tests/doubles/renderer.h"

namespace ostra {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class FinishedWorkTest : public testing::Test {
 protected:
  void tell(const RequestEnd& end, const FinishedWork& work) {
    const Service<Renderer>::Override override(renderer_);
    tellOnDesktop(end, work);
  }

  test::CallLog log_;
  test::RecordingRenderer renderer_{log_};
  const FinishedWork long_{"Convert to sRGB", 340, 10001ms, true};
};

TEST_F(FinishedWorkTest, IsToldWhenItWasLongAndPutAway) {
  tell({}, long_);
  EXPECT_THAT(log_.calls(), ElementsAre("notify “Convert to sRGB”: All 340 pictures are done."));
}

TEST_F(FinishedWorkTest, TellsOfOnePictureAsOne) {
  tell({}, {"Invert Color", 1, 11s, true});
  EXPECT_THAT(log_.calls(), ElementsAre("notify “Invert Color”: The picture is done."));
}

TEST_F(FinishedWorkTest, IsNotToldWhenItWasShort) {
  tell({}, {"Convert to sRGB", 340, 10s, true});
  EXPECT_THAT(log_.calls(), IsEmpty());
}

TEST_F(FinishedWorkTest, IsNotToldToWhoWatchedIt) {
  FinishedWork watched = long_;
  watched.wasPutAway = false;
  tell({}, watched);
  EXPECT_THAT(log_.calls(), IsEmpty());
}

TEST_F(FinishedWorkTest, IsNotToldAfterAFailure) {
  tell({NSError("org.example", 1)}, long_);
  EXPECT_THAT(log_.calls(), IsEmpty());
}

}  // namespace
}  // namespace ostra
