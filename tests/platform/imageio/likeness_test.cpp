#include "platform/imageio/likeness.h"

#include <random>

#include <gtest/gtest.h>

namespace ostra {
namespace {

struct Picture {
  Layout layout;
  Bytes bytes;
  Pixels pixels() const { return {layout, SharedBytes{nullptr, bytes}, Untagged{}}; }
};

/// RGBA of seeded noise around a value.
Picture noise(std::uint8_t around, CGImageAlphaInfo alpha = CGImageAlphaInfo::noneSkipLast) {
  Picture picture;
  picture.layout = {150, 70, 8, 32, 150 * 4, CGColorSpaceModel::rgb, static_cast<CGBitmapInfo>(alpha)};
  picture.bytes.resize(picture.layout.bytesPerRow * picture.layout.height);
  std::mt19937 random(3);
  for (std::uint8_t& byte : picture.bytes) byte = static_cast<std::uint8_t>(around + random() % 41 - 20);
  return picture;
}

std::uint8_t& sampleAt(Picture& picture, std::size_t x, std::size_t y, std::size_t component) {
  return picture.bytes[y * picture.layout.bytesPerRow + 4 * x + component];
}

void fill(Picture& picture, std::size_t component, std::uint8_t value) {
  for (std::size_t y = 0; y < picture.layout.height; ++y)
    for (std::size_t x = 0; x < picture.layout.width; ++x) sampleAt(picture, x, y, component) = value;
}

TEST(Likeness, IsWhatALossyEncoderKeeps) {
  const Picture picture = noise(100), other = noise(110);
  EXPECT_TRUE(areAlike(picture.pixels(), picture.pixels()));
  EXPECT_TRUE(areAlike(picture.pixels(), other.pixels()));
}

TEST(Likeness, EndsWithAnyLostComponent) {
  const Picture picture = noise(100);
  for (std::size_t component = 0; component < 3; ++component) {
    Picture lost = picture;
    fill(lost, component, 0);
    EXPECT_FALSE(areAlike(picture.pixels(), lost.pixels())) << component;
  }
  Picture skipped = picture;
  fill(skipped, 3, 0);
  EXPECT_TRUE(areAlike(picture.pixels(), skipped.pixels())) << "what is no colour";
}

TEST(Likeness, EndsWithALostBlockAtTheEdge) {
  const Picture picture = noise(100);
  Picture lost = picture;
  for (std::size_t y = 64; y < 70; ++y)
    for (std::size_t x = 128; x < 150; ++x) sampleAt(lost, x, y, 1) = 0;
  EXPECT_FALSE(areAlike(picture.pixels(), lost.pixels()));
}

TEST(Likeness, LooksAtOpacityAndAtNoColourThatCannotBeSeen) {
  Picture picture = noise(100, CGImageAlphaInfo::last);
  fill(picture, 3, 0);
  Picture other = picture;
  fill(other, 0, 255);
  EXPECT_TRUE(areAlike(picture.pixels(), other.pixels()));
  fill(other, 3, 60);
  EXPECT_FALSE(areAlike(picture.pixels(), other.pixels()));
}

TEST(Likeness, IsOfStraightAndPremultipliedColoursAlike) {
  Picture straight = noise(100, CGImageAlphaInfo::last), premultiplied = straight;
  fill(straight, 3, 128);
  fill(premultiplied, 3, 128);
  premultiplied.layout.bitmapInfo = static_cast<CGBitmapInfo>(CGImageAlphaInfo::premultipliedLast);
  for (std::size_t i = 0; i < premultiplied.bytes.size(); ++i)
    if (i % 4 != 3) premultiplied.bytes[i] = static_cast<std::uint8_t>(premultiplied.bytes[i] / 2);
  EXPECT_TRUE(areAlike(straight.pixels(), premultiplied.pixels()));
}

TEST(Likeness, IsOfDepthsAlike) {
  const Picture narrow = noise(100);
  Picture wide = narrow;
  wide.layout.bitsPerComponent = 16;
  wide.layout.bitsPerPixel = 64;
  wide.layout.bytesPerRow *= 2;
  wide.bytes.clear();
  for (const std::uint8_t byte : narrow.bytes) wide.bytes.insert(wide.bytes.end(), 2, byte);
  EXPECT_TRUE(areAlike(narrow.pixels(), wide.pixels()));
}

TEST(Likeness, NeedsTheSameSizeAndModel) {
  const Picture picture = noise(100);
  Picture shorter = picture;
  --shorter.layout.height;
  EXPECT_FALSE(areAlike(picture.pixels(), shorter.pixels()));
  Picture gray = picture;
  gray.layout.model = CGColorSpaceModel::monochrome;
  EXPECT_FALSE(areAlike(picture.pixels(), gray.pixels()));
}

}  // namespace
}  // namespace ostra
