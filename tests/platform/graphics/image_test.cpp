#include "platform/graphics/image.h"

#include <limits>

#include <gtest/gtest.h>

namespace ostra::test {
namespace {

CGImageRef make(const CGImage::Format& format, std::string_view space, std::size_t bytes) {
  auto found = space.empty() ? nullptr : CGColorSpace::createWithName(space);
  return CGImage::create(format, std::move(found), SharedBytes::adopt(Bytes(bytes)), true,
                         CGColorRenderingIntent::standard);
}

CGImage::Format pixels(std::size_t bits, std::size_t perPixel, CGBitmapInfo info) {
  return {4, 1, bits, bits * perPixel, bits * perPixel / 2, info};
}

TEST(Image, IsGrayWithOrWithoutAlpha) {
  for (const std::size_t bits : {8, 16}) {
    EXPECT_TRUE(make(pixels(bits, 1, 0), kCGColorSpaceGenericGrayGamma2_2, 99));
    EXPECT_TRUE(make(pixels(bits, 2, 1), kCGColorSpaceGenericGrayGamma2_2, 99));
    EXPECT_TRUE(make(pixels(bits, 2, 3), kCGColorSpaceGenericGrayGamma2_2, 99));
    EXPECT_FALSE(make(pixels(bits, 2, 0), kCGColorSpaceGenericGrayGamma2_2, 99));
    EXPECT_FALSE(make(pixels(bits, 2, 4), kCGColorSpaceGenericGrayGamma2_2, 99));
    EXPECT_FALSE(make(pixels(bits, 1, 1), kCGColorSpaceGenericGrayGamma2_2, 99));
  }
}

TEST(Image, IsColorWithAFourthComponentAtEitherEnd) {
  for (const std::size_t bits : {8, 16}) {
    EXPECT_TRUE(make(pixels(bits, 3, 0), kCGColorSpaceSRGB, 99));
    for (CGBitmapInfo alpha = 1; alpha <= 6; ++alpha) {
      EXPECT_TRUE(make(pixels(bits, 4, alpha), kCGColorSpaceSRGB, 99)) << alpha;
      EXPECT_FALSE(make(pixels(bits, 3, alpha), kCGColorSpaceSRGB, 99)) << alpha;
    }
    EXPECT_FALSE(make(pixels(bits, 4, 0), kCGColorSpaceSRGB, 99));
    EXPECT_FALSE(make(pixels(bits, 4, 7), kCGColorSpaceSRGB, 99));
  }
}

TEST(Image, IsCMYKWithoutAlpha) {
  EXPECT_TRUE(make(pixels(8, 4, 0), kCGColorSpaceDeviceCMYK, 99));
  EXPECT_TRUE(make(pixels(16, 4, 0x1000), kCGColorSpaceDeviceCMYK, 99));
  EXPECT_FALSE(make(pixels(8, 5, 3), kCGColorSpaceDeviceCMYK, 99));
  EXPECT_FALSE(make(pixels(8, 3, 0), kCGColorSpaceDeviceCMYK, 99));
}

TEST(Image, MayLackASpace) {
  const auto image = make(pixels(8, 3, 0), "", 99);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->colorSpace(), nullptr);
  EXPECT_TRUE(make(pixels(8, 1, 7), "", 99)) << "alpha alone";
  EXPECT_FALSE(make(pixels(8, 1, 7), kCGColorSpaceGenericGrayGamma2_2, 99));
}

TEST(Image, HasComponentsOf8BitsOrOf16InTheMachinesOrder) {
  EXPECT_TRUE(make(pixels(16, 3, 0x1000), kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make(pixels(16, 3, 0x3000), kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make(pixels(8, 3, 0x1000), kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make(pixels(32, 3, 0), kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make(pixels(32, 3, 0x100), kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make(pixels(4, 2, 0), kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({4, 1, 8, 25, 13, 0}, kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({4, 1, 8, 0, 13, 0}, kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({4, 1, 0, 0, 13, 0}, kCGColorSpaceSRGB, 99));
}

TEST(Image, NeedsASizeAndARowThatHoldsItsPixels) {
  EXPECT_FALSE(make({0, 1, 8, 24, 12, 0}, kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({4, 0, 8, 24, 12, 0}, kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({4, 1, 8, 24, 11, 0}, kCGColorSpaceSRGB, 99));
  const std::size_t most = std::numeric_limits<std::size_t>::max();
  EXPECT_FALSE(make({most, 1, 8, 24, 12, 0}, kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({1, most, 8, 24, 12, 0}, kCGColorSpaceSRGB, 99));
  EXPECT_FALSE(make({1, 3, 8, 24, most, 0}, kCGColorSpaceSRGB, 99));
}

TEST(Image, NeedsAProviderWithAllItsRows) {
  EXPECT_TRUE(make({4, 2, 8, 24, 20, 0}, kCGColorSpaceSRGB, 32)) << "the last row may end with its pixels";
  EXPECT_FALSE(make({4, 2, 8, 24, 20, 0}, kCGColorSpaceSRGB, 31));
  EXPECT_FALSE(make({4, 2, 8, 24, 20, 0}, kCGColorSpaceSRGB, 0));
}

TEST(Image, ReportsWhatItWasMadeOf) {
  const auto image =
      CGImage::create({4, 1, 16, 64, 40, 0x1003}, CGColorSpace::createWithName(kCGColorSpaceDisplayP3),
                      SharedBytes::adopt(Bytes(40, 7)), true, CGColorRenderingIntent::saturation);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->alphaInfo(), CGImageAlphaInfo::last);
  EXPECT_EQ(image->bitmapInfo(), 0x1003u);
  EXPECT_EQ(image->bitsPerComponent(), 16u);
  EXPECT_EQ(image->bitsPerPixel(), 64u);
  EXPECT_EQ(image->bytesPerRow(), 40u);
  EXPECT_EQ(image->colorSpace()->name(), kCGColorSpaceDisplayP3);
  EXPECT_EQ(image->renderingIntent(), CGColorRenderingIntent::saturation);
  EXPECT_EQ(image->data()[39], 7);
}

}  // namespace
}  // namespace ostra::test
