#include "platform/graphics/bitmap_context.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "platform/foundation/service.h"
#include "tests/platform/graphics/pictures.h"

namespace ostra::test {
namespace {

CGColorSpaceRef sRGB() { return CGColorSpace::createWithName(kCGColorSpaceSRGB); }
CGColorSpaceRef gray() { return CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2); }
CGColorSpaceRef cmyk() { return CGColorSpace::createWithName(kCGColorSpaceDeviceCMYK); }

CGImageRef whitePixels(std::size_t width) {
  return makeImage({std::vector<unsigned>(3 * width, 255), 8, 3, CGImageAlphaInfo::none, sRGB()});
}

TEST(BitmapContext, OffersExactlyTheFormatsOfTheConversions) {
  struct {
    CGColorSpaceRef space;
    std::vector<std::pair<std::size_t, CGBitmapInfo>> allowed;
  } const spaces[] = {{gray(), {{8, 0}, {16, 0x1000}}},
                      {sRGB(), {{8, 1}, {8, 5}, {16, 0x1001}, {16, 0x1005}}},
                      {cmyk(), {{8, 0}}}};
  for (const auto& [space, allowed] : spaces)
    for (const std::size_t bits : {1, 5, 8, 10, 16, 32})
      for (const CGBitmapInfo order : {0u, 0x100u, 0x1000u, 0x2000u, 0x3000u, 0x4000u})
        for (CGBitmapInfo alpha = 0; alpha < 9; ++alpha) {
          const std::pair wanted{bits, order | alpha};
          const bool expected = std::find(allowed.begin(), allowed.end(), wanted) != allowed.end();
          EXPECT_EQ(CGBitmapContext::create(3, 2, bits, 0, space, order | alpha) != nullptr, expected)
              << space->profileDescription() << " " << bits << " bits, info " << (order | alpha);
        }
}

TEST(BitmapContext, IsRefusedWithoutASpaceOrASideOrRoomForItsRows) {
  EXPECT_EQ(CGBitmapContext::create(3, 2, 8, 0, nullptr, 0), nullptr);
  EXPECT_EQ(CGBitmapContext::create(0, 2, 8, 0, sRGB(), 5), nullptr);
  EXPECT_EQ(CGBitmapContext::create(3, 0, 8, 0, sRGB(), 5), nullptr);
  EXPECT_EQ(CGBitmapContext::create(3, 2, 8, 11, sRGB(), 5), nullptr);
  EXPECT_EQ(CGBitmapContext::create(3, 2, 16, 25, sRGB(), 0x1005), nullptr)
      << "words begin at even addresses";
  EXPECT_NE(CGBitmapContext::create(3, 2, 8, 12, sRGB(), 5), nullptr);
}

TEST(BitmapContext, IsRefusedWhenTheMemoryCannotBeHad) {
  const std::size_t most = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(CGBitmapContext::create(most, 1, 8, 0, sRGB(), 5), nullptr);
  EXPECT_EQ(CGBitmapContext::create(most / 8, most / 8, 8, 0, sRGB(), 5), nullptr);
  EXPECT_EQ(CGBitmapContext::create(std::size_t{1} << 30, std::size_t{1} << 30, 8, 0, sRGB(), 5), nullptr);
}

TEST(BitmapContext, BeginsZeroedWithPaddedRows) {
  const auto surface = CGBitmapContext::create(3, 2, 8, 0, sRGB(), 1);
  EXPECT_EQ(surface->bytesPerRow(), 64u);
  for (std::size_t i = 0; i < 128; ++i) EXPECT_EQ(surface->data()[i], 0);
  EXPECT_EQ(CGBitmapContext::create(17, 2, 8, 0, sRGB(), 1)->bytesPerRow(), 128u);
  EXPECT_EQ(CGBitmapContext::create(3, 2, 8, 20, sRGB(), 1)->bytesPerRow(), 20u) << "as asked for";
}

TEST(BitmapContext, ReportsWhatItWasMadeOf) {
  const auto surface = CGBitmapContext::create(3, 2, 16, 0, sRGB(), 0x1001);
  EXPECT_EQ(surface->width(), 3u);
  EXPECT_EQ(surface->height(), 2u);
  EXPECT_EQ(surface->bitsPerComponent(), 16u);
  EXPECT_EQ(surface->bitmapInfo(), 0x1001u);
  EXPECT_EQ(surface->colorSpace(), sRGB());
}

TEST(BitmapContext, FillsWithGrayInEveryFormat) {
  struct {
    CGColorSpaceRef space;
    std::size_t bits;
    bool alpha;
    double gray;
    std::vector<unsigned> wanted;
  } const fills[] = {{gray(), 8, false, 1, {255}},
                     {gray(), 16, false, 1, {65535}},
                     {gray(), 8, false, 0.5, {128}},
                     {sRGB(), 8, false, 1, {255, 255, 255, 255}},
                     {sRGB(), 8, true, 0.2, {51, 51, 51, 255}},
                     {sRGB(), 16, true, 1, {65535, 65535, 65535, 65535}},
                     {sRGB(), 16, false, 0.2, {13107, 13107, 13107, 65535}},
                     {cmyk(), 8, false, 1, {0, 0, 0, 0}},
                     {cmyk(), 8, false, 0, {0, 0, 0, 255}}};
  for (const auto& fill : fills) {
    const auto surface = makeSurface(1, fill.space, fill.bits, fill.alpha);
    surface->setGrayFillColor(fill.gray, 1);
    surface->fillRect(all(*surface));
    EXPECT_EQ(readRow(*surface), fill.wanted) << fill.space->profileDescription() << " " << fill.bits;
  }
}

TEST(BitmapContext, FillsWithTransparencyOverWhatItHolds) {
  const auto surface = makeSurface(1, sRGB(), 8, true);
  surface->setGrayFillColor(1, 0.5);
  surface->fillRect(all(*surface));
  EXPECT_EQ(readRow(*surface), (std::vector<unsigned>{128, 128, 128, 128}));
  surface->fillRect(all(*surface));
  EXPECT_EQ(readRow(*surface), (std::vector<unsigned>{192, 192, 192, 192}));
}

TEST(BitmapContext, FillsAndClearsOnlyTheRectangleWhoseOriginIsBelow) {
  const auto surface = CGBitmapContext::create(3, 3, 8, 0, gray(), 0);
  surface->setGrayFillColor(1, 1);
  surface->fillRect({0, 0, 3, 3});
  surface->clearRect({1, 0, 1, 1});
  surface->setGrayFillColor(0.2, 1);
  surface->fillRect({0, 2, 1, 40});
  const std::uint8_t* data = surface->data();
  const std::size_t pitch = surface->bytesPerRow();
  const std::vector<std::vector<int>> wanted = {{51, 255, 255}, {255, 255, 255}, {255, 0, 255}};
  for (std::size_t y = 0; y < 3; ++y)
    for (std::size_t x = 0; x < 3; ++x) EXPECT_EQ(data[y * pitch + x], wanted[y][x]) << x << " " << y;
}

TEST(BitmapContext, ToleratesRectanglesThatAreNone) {
  const auto surface = CGBitmapContext::create(2, 2, 8, 0, gray(), 0);
  surface->setGrayFillColor(1, 1);
  const double nan = std::numeric_limits<double>::quiet_NaN(),
               endless = std::numeric_limits<double>::infinity();
  surface->fillRect({5, 5, 1, 1});
  surface->fillRect({0, 0, -1, -1});
  surface->fillRect({nan, nan, nan, nan});
  for (int i = 0; i < 2; ++i) EXPECT_EQ(surface->data()[i], 0);
  surface->fillRect({-endless, -endless, endless, endless});
  surface->fillRect({-1e300, -1e300, 2e300, 2e300});
  EXPECT_EQ(surface->data()[0], 255);
}

TEST(BitmapContext, ClearsToTransparentOrBlack) {
  const auto surface = makeSurface(1, sRGB(), 8, true);
  surface->drawImage(all(*surface), *whitePixels(1));
  surface->clearRect(all(*surface));
  EXPECT_EQ(readRow(*surface), (std::vector<unsigned>{0, 0, 0, 0}));
}

TEST(BitmapContext, KeepsRowsUprightAndApart) {
  Bytes bytes = {10, 20, 99, 99,
                 99, 30, 40};  // two rows of two pixels, three bytes of padding, none at the end
  const auto image = CGImage::create({2, 2, 8, 8, 5, 0}, gray(), SharedBytes::adopt(std::move(bytes)), false,
                                     CGColorRenderingIntent::standard);
  const auto surface = CGBitmapContext::create(2, 2, 8, 7, gray(), 0);
  surface->drawImage(all(*surface), *image);
  const std::uint8_t* data = surface->data();
  EXPECT_EQ(Bytes(data, data + 14), (Bytes{10, 20, 0, 0, 0, 0, 0, 30, 40, 0, 0, 0, 0, 0}));
}

TEST(BitmapContext, GivesItsMemoryToItsImage) {
  auto surface = CGBitmapContext::create(3, 2, 8, 0, sRGB(), 1);
  const std::uint8_t* data = surface->data();
  const auto image = CGBitmapContext::createImage(std::move(surface));
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->data(), data);
  EXPECT_EQ(image->width(), 3u);
  EXPECT_EQ(image->height(), 2u);
  EXPECT_EQ(image->bitsPerComponent(), 8u);
  EXPECT_EQ(image->bitsPerPixel(), 32u);
  EXPECT_EQ(image->bytesPerRow(), 64u);
  EXPECT_EQ(image->alphaInfo(), CGImageAlphaInfo::premultipliedLast);
  EXPECT_EQ(image->colorSpace(), sRGB());
  EXPECT_EQ(image->renderingIntent(), CGColorRenderingIntent::standard);
}

TEST(BitmapContext, GivesAFillThatNobodyAskedForUntilThen) {
  auto surface = makeSurface(1, gray(), 8, false);
  surface->setGrayFillColor(1, 1);
  surface->fillRect(all(*surface));
  EXPECT_EQ(CGBitmapContext::createImage(std::move(surface))->data()[0], 255);
}

TEST(BitmapContext, IsSpoiltByADrawingOfAnotherSize) {
  const auto drawingSpoils = [](const CGRect& rect, std::size_t width) {
    auto surface = makeSurface(2, sRGB(), 8, false);
    surface->drawImage(rect, *whitePixels(width));
    const bool noData = surface->data() == nullptr;
    surface->fillRect(all(*surface));
    surface->clearRect(all(*surface));
    surface->drawImage(all(*surface), *whitePixels(2));
    return noData && surface->data() == nullptr &&
           CGBitmapContext::createImage(std::move(surface)) == nullptr;
  };
  EXPECT_TRUE(drawingSpoils({0, 0, 2, 1}, 3));
  EXPECT_TRUE(drawingSpoils({0, 0, 1, 1}, 2));
  EXPECT_TRUE(drawingSpoils({1, 0, 2, 1}, 2));
  EXPECT_FALSE(drawingSpoils({0, 0, 2, 1}, 2));
}

TEST(BitmapContext, IsSpoiltByAPictureThatIsNotWhole) {
  const auto draw = [](const CGImage::Format& format, const CGColorSpaceRef& space, std::size_t bytes) {
    const CGImage image(format, space, SharedBytes::adopt(Bytes(bytes)), CGColorRenderingIntent::standard);
    auto surface = CGBitmapContext::create(2, 2, 8, 0, sRGB(), 5);
    surface->drawImage({0, 0, 2, 2}, image);
    return surface->data() != nullptr;
  };
  EXPECT_TRUE(draw({2, 2, 8, 24, 6, 0}, sRGB(), 12));
  EXPECT_FALSE(draw({2, 2, 8, 24, 6, 0}, sRGB(), 11));
  EXPECT_FALSE(draw({2, 2, 8, 24, 5, 0}, sRGB(), 99));
  EXPECT_FALSE(draw({2, 2, 8, 24, 6, 0}, gray(), 99));
  EXPECT_FALSE(draw({2, 2, 9, 27, 6, 0}, sRGB(), 99));
}

TEST(BitmapContext, MakesNoImageOfNoSurface) { EXPECT_EQ(CGBitmapContext::createImage(nullptr), nullptr); }

/// Refuses 16 bits and sRGB, passes the rest on.
class Refusing final : public GraphicsCreation {
 public:
  CGColorSpaceRef colorSpaceWithName(std::string_view name) override {
    return name == kCGColorSpaceSRGB ? nullptr : standard().colorSpaceWithName(name);
  }
  std::unique_ptr<CGBitmapContext> bitmapContext(std::size_t width, std::size_t height, std::size_t bits,
                                                 std::size_t bytesPerRow, CGColorSpaceRef space,
                                                 CGBitmapInfo info) override {
    return bits == 16 ? nullptr
                      : standard().bitmapContext(width, height, bits, bytesPerRow, std::move(space), info);
  }
  CGImageRef image(const CGImage::Format&, CGColorSpaceRef, SharedBytes, bool,
                   CGColorRenderingIntent) override {
    return nullptr;
  }
};

TEST(GraphicsCreation, CanBeReplacedForAScope) {
  const auto space = gray();
  {
    Refusing refusing;
    const Service<GraphicsCreation>::Override override(refusing);
    EXPECT_EQ(CGColorSpace::createWithName(kCGColorSpaceSRGB), nullptr);
    EXPECT_EQ(CGBitmapContext::create(1, 1, 16, 0, space, 0x1000), nullptr);
    EXPECT_NE(CGBitmapContext::create(1, 1, 8, 0, space, 0), nullptr);
    EXPECT_EQ(makeImage({{1}, 8, 1, CGImageAlphaInfo::none, space}), nullptr);
  }
  EXPECT_NE(CGBitmapContext::create(1, 1, 16, 0, space, 0x1000), nullptr);
}

}  // namespace
}  // namespace ostra::test
