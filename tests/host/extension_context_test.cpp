#include "host/extension_context.h"

#include <gtest/gtest.h>

#include "platform/dispatch/main_loop.h"

namespace ostra {
namespace {

TEST(HostExtensionContext, StopsTheMainLoopWhenTheRequestIsCompleted) {
  HostExtensionContext context({});
  EXPECT_FALSE(context.end());
  context.completeRequestReturningItems({}, nullptr);
  MainLoop::run();
  ASSERT_TRUE(context.end());
  EXPECT_FALSE(context.end()->error);
}

TEST(HostExtensionContext, StopsTheMainLoopWhenTheRequestIsCancelled) {
  HostExtensionContext context({});
  context.cancelRequestWithError(NSError("org.example", 7));
  MainLoop::run();
  ASSERT_TRUE(context.end());
  EXPECT_EQ(context.end()->error->code(), 7);
}

TEST(HostExtensionContext, IgnoresASecondEnd) {
  HostExtensionContext context({});
  int called = 0;
  context.completeRequestReturningItems({}, [&called](bool expired) {
    EXPECT_FALSE(expired);
    ++called;
  });
  context.cancelRequestWithError(NSError("org.example", 7));
  context.completeRequestReturningItems({}, [&called](bool) { ++called; });
  MainLoop::run();
  EXPECT_FALSE(context.end()->error);
  EXPECT_EQ(called, 1);
}

}  // namespace
}  // namespace ostra
