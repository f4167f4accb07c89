#include <cmath>
#include <cstring>

#include <gtest/gtest.h>
#include <lcms2.h>

#include "tests/engine/engine_fixture.h"

// The transforms over the platform's own surfaces and colour matching. Expected values follow from the
// definitions of the spaces; a conversion may differ from them by one step at 8 bits, a copy by nothing.

namespace ostra::test {
namespace {

using Alpha = CGImageAlphaInfo;

CGColorSpaceRef named(std::string_view name) { return CGColorSpace::createWithName(name); }
CGColorSpaceRef sRGB() { return named(kCGColorSpaceSRGB); }
CGColorSpaceRef gray() { return named(kCGColorSpaceGenericGrayGamma2_2); }

/// A picture of one row.
template <class Word>
CGImageRef picture(const std::vector<Word>& words, std::size_t components, Alpha alpha,
                   CGColorSpaceRef space) {
  Bytes bytes(words.size() * sizeof(Word));
  std::memcpy(bytes.data(), words.data(), bytes.size());
  return makeImage(packedFormat(words.size() / components, 1, 8 * sizeof(Word), components, alpha),
                   std::move(space), std::move(bytes));
}

using Words8 = std::vector<std::uint8_t>;
using Words16 = std::vector<std::uint16_t>;

template <class Word>
std::vector<Word> words(const CGImageRef& image) {
  std::vector<Word> row(image->width() * image->bitsPerPixel() / image->bitsPerComponent());
  std::memcpy(row.data(), image->data(), row.size() * sizeof(Word));
  return row;
}

CGImageRef transform(Kind kind, const CGImageRef& image, bool keepAlpha, CGColorSpaceRef target = nullptr) {
  return makeEngine(kind, std::move(target))->transformImage(image, keepAlpha, "a.png");
}

double encodeSRGB(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

/// The bytes of an ICC profile of a Lab space.
Bytes labProfile() {
  const cmsHPROFILE profile = cmsCreateLab4Profile(nullptr);
  cmsSetDeviceClass(profile, cmsSigColorSpaceClass);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

TEST(RealPixels, SixteenBitsWithAlphaStaySoInSRGB) {
  const CGImageRef source =
      picture<std::uint16_t>({40000, 20000, 1000, 65535, 9, 9, 9, 0}, 4, Alpha::last, sRGB());
  const CGImageRef result = transform(Kind::sRGB, source, true);
  EXPECT_EQ(result->bitsPerComponent(), 16u);
  EXPECT_EQ(result->bitmapInfo(), 4097u);
  EXPECT_EQ(words<std::uint16_t>(result), (Words16{40000, 20000, 1000, 65535, 0, 0, 0, 0}));
}

TEST(RealPixels, WithoutAlphaTransparencyIsWhite) {
  const CGImageRef source =
      picture<std::uint16_t>({40000, 20000, 1000, 65535, 9, 9, 9, 0}, 4, Alpha::last, sRGB());
  const CGImageRef result = transform(Kind::sRGBJPEG, source, false);
  EXPECT_EQ(result->bitmapInfo(), 4101u);
  const Words16 row = words<std::uint16_t>(result);
  EXPECT_EQ(Words16(row.begin(), row.begin() + 3), (Words16{40000, 20000, 1000}));
  EXPECT_EQ(Words16(row.begin() + 4, row.begin() + 7), (Words16{65535, 65535, 65535}));
}

TEST(RealPixels, HalfTransparentBlackOnWhiteIsHalfWhite) {
  const CGImageRef result =
      transform(Kind::jpeg, picture<std::uint8_t>({0, 0, 0, 128}, 4, Alpha::last, sRGB()), false);
  EXPECT_NEAR(words<std::uint8_t>(result)[0], 127, 1);
}

TEST(RealPixels, GrayWithAlphaStaysGrayWithAlpha) {
  const CGImageRef result = transform(
      Kind::grayscale, picture<std::uint8_t>({200, 128, 77, 255, 50, 0}, 2, Alpha::last, gray()), true);
  EXPECT_EQ(result->bitsPerPixel(), 16u);
  EXPECT_EQ(result->alphaInfo(), Alpha::premultipliedLast);
  EXPECT_EQ(result->colorSpace(), gray());
  const Words8 row = words<std::uint8_t>(result);
  EXPECT_NEAR(row[0], 200 * 128 / 255.0, 1);
  EXPECT_EQ(Words8(row.begin() + 1, row.end()), (Words8{128, 77, 255, 0, 0}));
}

TEST(RealPixels, SixteenBitGrayWithAlphaComesOutAtEight) {
  const CGImageRef result =
      transform(Kind::grayscale, picture<std::uint16_t>({257 * 90, 65535}, 2, Alpha::last, gray()), true);
  EXPECT_EQ(result->bitsPerComponent(), 8u);
  EXPECT_EQ(words<std::uint8_t>(result), (Words8{90, 255}));
}

TEST(RealPixels, SixteenBitOpaqueGrayStaysSo) {
  const CGImageRef result =
      transform(Kind::grayscale, picture<std::uint16_t>({12345, 54321}, 1, Alpha::none, gray()), false);
  EXPECT_EQ(result->bitmapInfo(), 4096u);
  EXPECT_EQ(words<std::uint16_t>(result), (Words16{12345, 54321}));
}

TEST(RealPixels, ANeutralSRGBPixelBecomesTheSameGray) {
  Words8 pixels;
  for (int v = 0; v < 256; ++v) pixels.insert(pixels.end(), 4, static_cast<std::uint8_t>(v));
  const Words8 row =
      words<std::uint8_t>(transform(Kind::grayscale, picture(pixels, 4, Alpha::noneSkipLast, sRGB()), false));
  for (int v = 0; v < 256; ++v) EXPECT_EQ(row[v], v);
}

TEST(RealPixels, AColourBecomesTheGrayOfItsLuminance) {
  const Words8 row = words<std::uint8_t>(transform(
      Kind::grayscale,
      picture<std::uint8_t>({255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0}, 4, Alpha::noneSkipLast, sRGB()),
      false));
  // Y of the three primaries as profiles know them, adapted to D50.
  const double luminance[] = {0.2225, 0.7169, 0.0606};
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(row[i], 255 * encodeSRGB(luminance[i]), 1.2) << i;
}

TEST(RealPixels, AnotherSpaceIsMatchedToSRGB) {
  const CGImageRef source =
      picture<std::uint8_t>({128, 128, 128, 0}, 4, Alpha::noneSkipLast, named(kCGColorSpaceAdobeRGB1998));
  const Words8 row = words<std::uint8_t>(transform(Kind::sRGB, source, false));
  const double expected = 255 * encodeSRGB(std::pow(128 / 255.0, 563 / 256.0));
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(row[i], expected, 1.0) << i;
}

TEST(RealPixels, AProfileConversionMatchesAndCarriesTheProfile) {
  const CGColorSpaceRef adobe = named(kCGColorSpaceAdobeRGB1998);
  const CGImageRef result =
      transform(Kind::convertColorProfile,
                picture<std::uint8_t>({128, 128, 128, 0}, 4, Alpha::noneSkipLast, sRGB()), false, adobe);
  EXPECT_EQ(result->colorSpace(), adobe);
  const double light = std::pow((128 / 255.0 + 0.055) / 1.055, 2.4);
  EXPECT_NEAR(words<std::uint8_t>(result)[0], 255 * std::pow(light, 256 / 563.0), 1.0);
}

TEST(RealPixels, AProfileOfAnotherModelIsRefused) {
  const CGColorSpaceRef lab = CGColorSpace::createWithICCData(labProfile());
  ASSERT_NE(lab, nullptr);
  ASSERT_EQ(lab->model(), CGColorSpaceModel::lab);
  const CGImageRef source = picture<std::uint8_t>({1, 2, 3, 0}, 4, Alpha::noneSkipLast, sRGB());
  EXPECT_EQ(failureOf([&] { transform(Kind::convertColorProfile, source, false, lab); }),
            "a.png: could not convert to the chosen profile (only RGB and gray profiles are supported).");
}

TEST(RealPixels, InvertedGrayWithAlphaIsSRGB) {
  const CGImageRef result = transform(
      Kind::invert, picture<std::uint8_t>({100, 128, 0, 0}, 2, Alpha::premultipliedLast, gray()), true);
  EXPECT_EQ(result->colorSpace(), sRGB());
  const Words8 row = words<std::uint8_t>(result);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(row[i], 28, 1) << i;
  EXPECT_EQ(Words8(row.begin() + 3, row.end()), (Words8{128, 0, 0, 0, 0})) << "nothing stays nothing";
}

TEST(RealPixels, InvertedOpaqueGrayStaysGray) {
  const CGImageRef result =
      transform(Kind::invert, picture<std::uint8_t>({0, 100, 255}, 1, Alpha::none, gray()), false);
  EXPECT_EQ(result->colorSpace(), gray());
  EXPECT_EQ(words<std::uint8_t>(result), (Words8{255, 155, 0}));
}

TEST(RealPixels, TransparencyThatIsNotKeptIsWhiteBeforeInversionAndBlackAfterIt) {
  const Words8 row = words<std::uint8_t>(transform(
      Kind::invert, picture<std::uint8_t>({0, 0, 0, 0, 10, 20, 30, 255}, 4, Alpha::last, sRGB()), false));
  EXPECT_EQ(Words8(row.begin(), row.begin() + 3), (Words8{0, 0, 0}));
  EXPECT_EQ(Words8(row.begin() + 4, row.begin() + 7), (Words8{245, 235, 225}));
}

TEST(RealPixels, InvertedTwiceIsTheSame) {
  const Words16 pixels{0, 1, 2, 65535, 20000, 30000, 40000, 40000, 7, 8, 9, 10};
  const CGImageRef source = picture(pixels, 4, Alpha::premultipliedLast, sRGB());
  const CGImageRef once = transform(Kind::invert, source, true);
  EXPECT_EQ(words<std::uint16_t>(once),
            (Words16{65535, 65534, 65533, 65535, 20000, 10000, 0, 40000, 3, 2, 1, 10}));
  EXPECT_EQ(words<std::uint16_t>(transform(Kind::invert, once, true)), pixels);
}

TEST(RealPixels, InvertedCMYKIsSRGB) {
  const CGImageRef result =
      transform(Kind::invert,
                picture<std::uint8_t>({0, 0, 0, 0}, 4, Alpha::none, named(kCGColorSpaceDeviceCMYK)), false);
  EXPECT_EQ(result->colorSpace(), sRGB());
  const Words8 row = words<std::uint8_t>(result);
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(row[i], 0, 1) << "no ink is white, and inverted black";
}

}  // namespace
}  // namespace ostra::test
