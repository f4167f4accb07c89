#include <gtest/gtest.h>

#include "platform/appkit/renderer.h"

namespace ostra {
namespace {

TEST(PlainRenderer, WritesAnAlertOnceAndLineByLine) {
  NSAlert alert;
  alert.messageText = "Invert Color could not convert every image";
  alert.informativeText = "a.png: the image could not be decoded.\nb\033[2J.png: could not invert the image.";
  testing::internal::CaptureStderr();
  Renderer::standard().run(alert);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Invert Color could not convert every image\n"
            "  a.png: the image could not be decoded.\n"
            "  b?[2J.png: could not invert the image.\n");
}

TEST(PlainRenderer, CountsASavePanelAsCancelledWithoutAWord) {
  testing::internal::CaptureStderr();
  const SavePanelAnswer answer = Renderer::standard().run(NSSavePanel());
  EXPECT_EQ(answer.response, NSModalResponseCancel);
  EXPECT_FALSE(answer.url);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(PlainRenderer, DrawsNoProgressAndMakesNoNoise) {
  testing::internal::CaptureStderr();
  Renderer::standard().progress({1, 3, "a.png", ""});
  Renderer::standard().beep();
  Renderer::standard().activate();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace ostra
