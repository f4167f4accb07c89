#include <gtest/gtest.h>

#include "tests/platform/imageio/gif_files.h"

namespace ostra::test {
namespace {

constexpr Fault kDamaged{FaultKind::damaged};

GifParts smallParts() {
  GifParts parts;
  parts.bits = 2;
  parts.screenWidth = parts.width = 3;
  parts.screenHeight = parts.height = 2;
  return parts;
}

// Clear, six entries of two bits, the end, as codes of three bits and, once there are eight, four.
std::vector<GifCode> plainCodes() { return {{4, 3}, {1, 3}, {2, 3}, {3, 3}, {0, 4}, {1, 4}, {2, 4}, {5, 4}}; }

Bytes withCodes(const std::vector<GifCode>& codes, unsigned codeSize = 2) {
  GifParts parts = smallParts();
  parts.data = gifDataOfCodes(codes, codeSize);
  return gifOf(parts);
}

// Half a picture is never taken for a whole one: only the trailer may be missing.
TEST(GifCutOff, IsRefusedAnywhere) {
  for (const bool interlaced : {false, true}) {
    GifParts parts;
    parts.interlaced = interlaced;
    parts.localPalette = true;
    const Bytes file = gifOf(parts);
    for (std::size_t size = 0; size + 1 < file.size(); ++size)
      ASSERT_TRUE(faultOf(decodeBytes(ByteView(file).first(size)))) << size << " of " << file.size();
    EXPECT_EQ(asRgba16(decoded(ByteView(file).first(file.size() - 1))), gifCanvas(parts));
  }
}

TEST(GifCutOff, InALaterFrameIsRefusedToo) {
  GifParts parts;
  parts.frames = 2;
  const Bytes file = gifOf(parts);
  const ByteView cut = ByteView(file).first(file.size() - 100);
  EXPECT_EQ(std::get<std::unique_ptr<Reader>>(openBytes(cut))->opened().count, 2u);
  EXPECT_EQ(faultOf(decodeBytes(cut)), kDamaged);
}

TEST(GifFlippedBits, NeverCrash) {
  GifParts parts;
  parts.extensions =
      joined({gifExtension(0xFE, bytesOfText("words")), gifApplication("XMP DataXMP", Bytes(40))});
  const Bytes file = gifOf(parts);
  Limits limits;
  limits.pixels = 4'000'000;
  std::size_t refused = 0;
  for (std::size_t i = 0; i < 3000; ++i) {
    Bytes flipped = file;
    flipped[i * 7919 % flipped.size()] ^= static_cast<std::uint8_t>(1u << i % 8);
    auto opened = openBytes(flipped, limits);
    if (std::holds_alternative<Fault>(opened)) continue;
    Reader& reader = *std::get<std::unique_ptr<Reader>>(opened);
    if (faultOf(reader.decode(0))) ++refused;
    reader.properties(0);
  }
  EXPECT_GT(refused, 500u);
}

TEST(GifCodes, OfTheSmallPictureAreRight) {
  const Pixels pixels = decoded(withCodes(plainCodes()));
  const Bytes palette = gifPalette(smallParts());
  const Bytes entries = {1, 2, 3, 0, 1, 2};
  for (std::size_t i = 0; i < entries.size(); ++i) {
    for (std::size_t c = 0; c < 3; ++c)
      ASSERT_EQ(pixels.bytes.view[4 * i + c], palette[3 * std::size_t{entries[i]} + c]) << i;
  }
}

TEST(GifCodes, MayLackTheClearCodeAndTheEnd) {
  auto codes = plainCodes();
  const auto whole = asRgba16(decoded(withCodes(codes)));
  codes.pop_back();
  EXPECT_EQ(asRgba16(decoded(withCodes(codes))), whole) << "without the end";
  EXPECT_EQ(asRgba16(decoded(withCodes({{1, 3}, {2, 3}, {3, 3}, {0, 4}, {1, 4}, {2, 4}, {5, 4}}))), whole);
}

TEST(GifCodes, ThatAreImpossibleAreRefused) {
  const auto faultAt = [](std::size_t place, unsigned code) {
    auto codes = plainCodes();
    codes[place].code = code;
    return faultOf(decodeBytes(withCodes(codes)));
  };
  EXPECT_EQ(faultAt(1, 6), kDamaged) << "nothing is learnt after the clear code yet";
  EXPECT_EQ(faultAt(2, 7), kDamaged) << "one further than the next";
  EXPECT_EQ(faultAt(4, 15), kDamaged);
  EXPECT_EQ(faultAt(4, 5), kDamaged) << "the end too early";
}

TEST(GifCodes, ThatSayTooLittleAreRefused) {
  auto codes = plainCodes();
  codes.erase(codes.end() - 2);
  EXPECT_EQ(faultOf(decodeBytes(withCodes(codes))), kDamaged) << "five entries for six pixels";
}

TEST(GifCodes, BehindTheLastPixelAreNotLookedAt) {
  const auto samples = asRgba16(decoded(withCodes(plainCodes())));
  auto codes = plainCodes();
  codes.insert(codes.end() - 1, GifCode{1, 4});
  EXPECT_EQ(asRgba16(decoded(withCodes(codes))), samples) << "a seventh entry";
  // The string of the last code goes beyond the last pixel.
  const auto longer = withCodes({{4, 3}, {1, 3}, {6, 3}, {7, 3}, {8, 4}, {5, 4}});
  EXPECT_EQ(faultOf(decodeBytes(longer)), std::nullopt);
}

TEST(GifCodes, OfEverySizeThatIsNoneAreRefused) {
  for (const unsigned size : {0u, 9u, 12u, 255u})
    EXPECT_EQ(faultOf(decodeBytes(withCodes(plainCodes(), size))), kDamaged) << size;
}

TEST(GifPalette, MustBeThere) {
  GifParts parts;
  parts.hasPalette = false;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts))), kDamaged);
}

TEST(GifPalette, ThatIsSaidToBeLongerThanTheFileIsRefused) {
  GifParts parts = smallParts();
  Bytes file = gifOf(parts);
  file[10] |= 7;  // 256 entries instead of 4
  EXPECT_TRUE(faultOf(decodeBytes(file)));
}

TEST(GifPalette, ThatIsSaidToBeShorterIsRefused) {
  Bytes file = gifOf(GifParts());
  file[10] = static_cast<std::uint8_t>(file[10] & ~7);
  EXPECT_TRUE(faultOf(decodeBytes(file)));
}

TEST(GifSizes, OfNothingAreRefused) {
  for (const bool wide : {false, true}) {
    GifParts parts;
    parts.data = gifDataOfCodes({{256, 9}, {257, 9}}, 8);
    (wide ? parts.height : parts.width) = 0;
    EXPECT_TRUE(faultOf(decodeBytes(gifOf(parts))));
  }
}

TEST(GifSizes, OfAFrameOutsideOfEveryScreenAreRefused) {
  GifParts parts;
  parts.left = 65'535;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts))), kDamaged);
}

TEST(GifSizes, OfAGiantScreenAreRefusedBeforeAnythingIsAllocated) {
  GifParts parts = smallParts();
  parts.screenWidth = parts.screenHeight = 65535;
  EXPECT_TRUE(std::holds_alternative<std::unique_ptr<Reader>>(openBytes(gifOf(parts))))
      << "opening refuses none";
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts))), (Fault{FaultKind::limit, LimitName::pixels}));
  parts.screenWidth = parts.screenHeight = 20'000;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts))), (Fault{FaultKind::limit, LimitName::compressionRatio}));
  Limits tight;
  tight.decodedBytes = 3 * 2 * 4 - 1;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(smallParts()), tight)),
            (Fault{FaultKind::limit, LimitName::decodedBytes}));
}

TEST(GifFrames, OfNoneIsNoPicture) {
  GifParts parts;
  parts.frames = 0;
  EXPECT_TRUE(std::holds_alternative<Fault>(openBytes(gifOf(parts))));
}

TEST(GifBlocks, OfAnUnknownKindAreRefused) {
  Bytes file = gifOf(GifParts());
  file.back() = 'x';
  EXPECT_EQ(faultOf(decodeBytes(file)), kDamaged);
}

TEST(GifLimits, OfMetadataAndProfilesRefuseThePicture) {
  GifParts parts;
  parts.extensions = gifExtension(0xFE, Bytes(5000, 'x'));
  Limits tight;
  tight.metadataBytes = 4000;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts), tight)), (Fault{FaultKind::limit, LimitName::metadataBytes}));
  parts.extensions = gifApplication("ICCRGBG1012", Bytes(5000, 'x'));
  tight = {};
  tight.profileBytes = 4000;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts), tight)), (Fault{FaultKind::limit, LimitName::profileBytes}));
  parts.extensions = gifApplication("XMP DataXMP", Bytes(5000, 'x'));
  tight = {};
  tight.metadataBytes = 4000;
  EXPECT_EQ(faultOf(decodeBytes(gifOf(parts), tight)), (Fault{FaultKind::limit, LimitName::metadataBytes}));
}

}  // namespace
}  // namespace ostra::test
