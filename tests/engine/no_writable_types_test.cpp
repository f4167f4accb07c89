#include "tests/engine/engine_fixture.h"

// A program of its own: a process asks for the writable types only once.

namespace ostra::test {
namespace {

class WithoutAListOfWritableTypes : public EngineOverDoubles {};

TEST_F(WithoutAListOfWritableTypes, EveryFormatKeepingConversionMakesAPNGBesideTheSource) {
  bench_.destinations.writable = std::nullopt;
  for (const char* type : {"public.png", "public.jpeg", "public.tiff"}) {
    const auto plan = makeEngine(Kind::invert)->makePlan(URL::fileURLWithPath("/a.x"), type, 2);
    EXPECT_EQ(plan.destination.path(), "/a.png");
    EXPECT_EQ(plan.uti, "public.png");
    EXPECT_FALSE(plan.inPlace);
  }
}

}  // namespace
}  // namespace ostra::test
