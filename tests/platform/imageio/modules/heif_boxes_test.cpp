#include <gtest/gtest.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/heif_transforms.h"
#include "platform/imageio/codecs/wide_samples.h"
#include "tests/platform/imageio/modules/heif_files.h"

namespace ostra::test {
namespace {

const Bytes kQuarter[4] = {{0}, {1}, {2}, {3}};

BmffBox turn(int quarters) { return {bmffType("irot"), kQuarter[quarters]}; }
BmffBox mirror(int mode) { return {bmffType("imir"), kQuarter[mode]}; }

int orientationOf(std::vector<BmffBox> properties) {
  return heifTransforms(properties, 40, 30).value().orientation;
}

TEST(HeifTransforms, QuartersOfATurnGoToTheLeft) {
  EXPECT_EQ(orientationOf({}), 1);
  EXPECT_EQ(orientationOf({turn(1)}), 8);
  EXPECT_EQ(orientationOf({turn(2)}), 3);
  EXPECT_EQ(orientationOf({turn(3)}), 6);
}

TEST(HeifTransforms, AMirrorExchangesTopAndBottomOrTheSides) {
  EXPECT_EQ(orientationOf({mirror(0)}), 4);
  EXPECT_EQ(orientationOf({mirror(1)}), 2);
}

TEST(HeifTransforms, ApplyInTheirOrder) {
  EXPECT_EQ(orientationOf({turn(1), mirror(0)}), 5);
  EXPECT_EQ(orientationOf({mirror(0), turn(1)}), 7);
  EXPECT_EQ(orientationOf({turn(1), turn(3)}), 1);
}

TEST(HeifTransforms, AreMadeOfEveryOrientation) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const HeifTurn made = heifTurn(orientation);
    std::vector<BmffBox> properties = {turn(made.quarters)};
    if (made.mirror) properties.push_back(mirror(*made.mirror));
    EXPECT_EQ(orientationOf(properties), orientation);
  }
}

TEST(HeifTransforms, ACropIsInStoredPixelsWhereverItStands) {
  const Bytes first = cleanAperture(20, 10, 5, -4), turned = cleanAperture(10, 20, -4, -5);
  for (const auto& properties :
       {std::vector<BmffBox>{{bmffType("clap"), first}, turn(1)}, {turn(1), {bmffType("clap"), turned}}}) {
    const auto transforms = heifTransforms(properties, 40, 30).value();
    EXPECT_EQ(transforms.crop.x, 15u);
    EXPECT_EQ(transforms.crop.y, 6u);
    EXPECT_EQ(transforms.crop.width, 20u);
    EXPECT_EQ(transforms.crop.height, 10u);
    EXPECT_EQ(transforms.orientation, 8);
  }
}

TEST(HeifTransforms, ACropOfPixelsThatAreNotThereIsRefused) {
  for (const Bytes& content :
       {cleanAperture(41, 30, 0, 0), cleanAperture(20, 10, 11, 0), cleanAperture(0, 10, 0, 0),
        cleanAperture(20, 10, 0, -11), Bytes(32), Bytes(5)}) {
    const std::vector<BmffBox> properties = {{bmffType("clap"), content}};
    EXPECT_FALSE(heifTransforms(properties, 40, 30));
  }
}

std::string typeOf(const std::string& brands) {
  Bytes file = bytesOfText(std::string(3, '\0') + static_cast<char>(8 + brands.size()) + "ftyp" + brands);
  const Codec* codec = codecForBytes(file);
  return codec == nullptr ? "none" : std::string(codec->type);
}

TEST(HeifBrands, TheFilesOwnBrandDecides) {
  const std::string version(4, '\0');
  EXPECT_EQ(typeOf("heic" + version + "mif1heicavif"), "public.heic");
  EXPECT_EQ(typeOf("heix" + version + "mif1"), "public.heic");
  EXPECT_EQ(typeOf("hevc" + version + "heic"), "public.heics");
  EXPECT_EQ(typeOf("avif" + version + "avisheic"), "public.avif");
  EXPECT_EQ(typeOf("avis" + version + "avif"), "public.avis");
}

TEST(HeifBrands, OfAGeneralOneTheFirstThatSaysMoreDecides) {
  const std::string version(4, '\0');
  EXPECT_EQ(typeOf("mif1" + version + "mif1heicavif"), "public.heic");
  EXPECT_EQ(typeOf("mif1" + version + "miafavifheic"), "public.avif");
  EXPECT_EQ(typeOf("mif1" + version + "mif1miaf"), "public.heif");
  EXPECT_EQ(typeOf("mp42" + version + "mp42heic"), "none");
}

TEST(WideSamples, KeepBlackAndWhiteAndRoundToTheNearest) {
  for (const unsigned bits : {10u, 12u}) {
    const unsigned most = (1u << bits) - 1;
    const WideSamples wide(bits, 16);
    for (unsigned value = 0; value <= most; ++value) {
      std::uint8_t word[2] = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
      wide.widen(word, 1);
      const unsigned expected = (value * 65535u * 2 + most) / (2 * most);
      ASSERT_EQ(word[0] | word[1] << 8, static_cast<int>(expected)) << value;
    }
  }
}

TEST(WideSamples, TheRangeOfVideoBecomesTheWholeOne) {
  const WideSamples whole(8, 8, true);
  const Bytes video = {0, 16, 126, 235, 255};
  Bytes samples(5);
  whole.spread(video.data(), video.size(), samples.data(), 1);
  EXPECT_EQ(samples, (Bytes{0, 0, 128, 255, 255}));
}

}  // namespace
}  // namespace ostra::test
