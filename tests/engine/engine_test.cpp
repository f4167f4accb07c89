#include <type_traits>

#include "tests/engine/engine_fixture.h"

namespace ostra::test {
namespace {

using Engine = OstraQuickActionEngine;

// The two records are values; the engine is not.
static_assert(std::is_copy_assignable_v<Engine::Plan> && std::is_copy_assignable_v<Engine::Outcome>);
static_assert(!std::is_copy_constructible_v<Engine>);

class EngineObject : public EngineOverDoubles {};

TEST_F(EngineObject, HoldsTheThreeValuesThatItWasMadeWith) {
  const CGColorSpaceRef target = sRGB();
  const Engine engine(Kind::convertColorProfile, target, 0.9);
  EXPECT_EQ(engine.kind(), Kind::convertColorProfile);
  EXPECT_EQ(engine.targetColorSpace(), target);
  EXPECT_EQ(engine.lossyQuality(), 0.9);
}

TEST_F(EngineObject, LetsTheSpaceAndTheQualityBeSet) {
  Engine engine(Kind::invert, nullptr, 0.9);
  engine.setTargetColorSpace(sRGB());
  engine.setLossyQuality(0.5);
  EXPECT_EQ(engine.targetColorSpace(), sRGB());
  EXPECT_EQ(engine.lossyQuality(), 0.5);
}

TEST_F(EngineObject, HoldsItsSpaceUntilItGoesAway) {
  const CGColorSpaceRef target = sRGB();
  const auto holders = target.use_count();
  auto engine = makeEngine(Kind::convertColorProfile, target);
  EXPECT_EQ(target.use_count(), holders + 1);
  engine.reset();
  EXPECT_EQ(target.use_count(), holders);
}

}  // namespace
}  // namespace ostra::test
