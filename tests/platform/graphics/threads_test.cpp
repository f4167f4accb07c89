#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "platform/graphics/row_threads.h"
#include "tests/platform/graphics/built_profiles.h"
#include "tests/platform/graphics/pictures.h"

namespace ostra::test {
namespace {

TEST(BandsOfRows, AreAllRowsOnce) {
  for (const std::size_t rows : {1, 2, 3, 7, 1000, 4001}) {
    for (const std::size_t pixels : {1, 500, 100000}) {
      std::vector<std::atomic<int>> seen(rows);
      forBandsOfRows(rows, pixels, [&](std::size_t first, std::size_t last) {
        for (std::size_t y = first; y < last; ++y) ++seen.at(y);
      });
      for (const auto& times : seen) ASSERT_EQ(times, 1);
    }
  }
}

CGImageRef ramp(std::size_t width, std::size_t height, const CGColorSpaceRef& space) {
  const auto n = static_cast<std::size_t>(space->numberOfComponents());
  Bytes bytes(width * height * n);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 1000);
  return CGImage::create({width, height, 8, 8 * n, width * n, 0}, space, SharedBytes::adopt(std::move(bytes)),
                         false, CGColorRenderingIntent::standard);
}

Bytes draw(const CGImage& image, const CGColorSpaceRef& space) {
  const auto surface = CGBitmapContext::create(image.width(), image.height(), 8, 0, space, 5);
  surface->drawImage(all(*surface), image);
  const std::uint8_t* data = surface->data();
  return {data, data + surface->bytesPerRow() * surface->height()};
}

TEST(Drawing, OfALargePictureIsThatOfItsRows) {
  const auto source = CGColorSpace::createWithName(kCGColorSpaceDisplayP3);
  const auto sRGB = CGColorSpace::createWithName(kCGColorSpaceSRGB);
  const std::size_t width = 997, height = 701;
  const auto large = ramp(width, height, source);
  const Bytes together = draw(*large, sRGB);
  const std::size_t pitch = together.size() / height;
  for (std::size_t y = 0; y < height; y += 50) {
    const CGImage row({width, 1, 8, 24, 3 * width, 0}, source,
                      {large->pixels().owner, large->pixels().view.subspan(y * 3 * width, 3 * width)},
                      CGColorRenderingIntent::standard);
    const Bytes alone = draw(row, sRGB);
    ASSERT_TRUE(std::equal(alone.begin(), alone.begin() + static_cast<long>(4 * width),
                           together.begin() + static_cast<long>(y * pitch)));
  }
}

TEST(Drawing, OnSeveralThreadsAtOnceGivesTheSamePictures) {
  const auto sRGB = CGColorSpace::createWithName(kCGColorSpaceSRGB);
  const std::vector<Bytes> profiles = {cmykTableProfile(), rgbTableProfile(), gammaProfile(1.9, 2.1)};
  std::vector<Bytes> wanted;
  for (const Bytes& profile : profiles)
    wanted.push_back(draw(*ramp(300, 20, CGColorSpace::createWithICCData(profile)), sRGB));
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (std::size_t round = 0; round < 30; ++round) {
        const std::size_t i = (t + round) % profiles.size();
        const auto space = CGColorSpace::createWithICCData(profiles[i]);
        if (draw(*ramp(300, 20, space), sRGB) != wanted[i]) ++wrong;
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace ostra::test
