#include <gtest/gtest.h>
#include <zlib.h>

#include "platform/graphics/color_space.h"
#include "platform/imageio/profile_space.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

Bytes profileOf(std::string_view space) {
  const ByteView profile = CGColorSpace::createWithName(space)->iccData();
  return Bytes(profile.begin(), profile.end());
}

Bytes deflated(ByteView bytes) {
  uLongf size = compressBound(bytes.size());
  Bytes stream(size);
  compress(stream.data(), &size, bytes.data(), bytes.size());
  stream.resize(size);
  return stream;
}

Bytes iccChunk(const Bytes& profile) {
  return pngChunk("iCCP", joined({bytesOfText("icc"), {0, 0}, deflated(profile)}));
}
Bytes gammaChunk(std::uint8_t a, std::uint8_t b, std::uint8_t c) {
  return pngChunk("gAMA", Bytes{0, a, b, c});
}

std::string nameIn(const ProfileRecord& record) {
  const auto* named = std::get_if<NamedSpace>(&record);
  return named != nullptr ? named->name : "";
}

class PngColour : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    rgb_ = madeByImageMagick({"-size", "3x2", "xc:red", "-strip", "-define", "png:color-type=2", "-define",
                              "png:exclude-chunks=all"},
                             "png");
    gray_ = madeByImageMagick({"-size", "3x2", "xc:gray50", "-strip", "-define", "png:color-type=0",
                               "-define", "png:exclude-chunks=all"},
                              "png");
  }
  static ProfileRecord recordOf(const Bytes& png, std::initializer_list<Bytes> chunks) {
    return decoded(withPngChunk(png, joined(chunks))).profile;
  }
  Bytes rgb_, gray_;
  const Bytes srgb_ = pngChunk("sRGB", Bytes{0});
  const Bytes gamma_ = gammaChunk(0, 0xB1, 0x8F);  // 45455
};

TEST_F(PngColour, IsUntaggedWithoutAMark) {
  EXPECT_TRUE(std::holds_alternative<Untagged>(recordOf(rgb_, {})));
  EXPECT_EQ(propertiesOf(rgb_).tree.count("ProfileName"), 0u);
}

TEST_F(PngColour, OfAProfileIsItsBytes) {
  const Bytes profile = profileOf(kCGColorSpaceDisplayP3);
  const auto record = recordOf(rgb_, {gamma_, srgb_, iccChunk(profile)});
  ASSERT_TRUE(std::holds_alternative<IccProfile>(record));
  EXPECT_EQ(std::get<IccProfile>(record).bytes, profile);
  EXPECT_EQ(propertiesOf(withPngChunk(rgb_, iccChunk(profile))).tree.at("ProfileName"), Value("Display P3"));
}

TEST_F(PngColour, OfTheSRgbMarkHoldsOverGamma) {
  EXPECT_EQ(nameIn(recordOf(rgb_, {gamma_, srgb_})), kCGColorSpaceSRGB);
}

TEST_F(PngColour, OfGammaAloneHasTheUsualPrimaries) {
  const auto record = recordOf(rgb_, {gamma_});
  ASSERT_TRUE(std::holds_alternative<Calibrated>(record));
  const auto& space = std::get<Calibrated>(record);
  EXPECT_NEAR(space.gamma, 2.2, 1e-4);
  EXPECT_NEAR(space.white[0], 0.3127, 1e-9);
  EXPECT_NEAR((*space.primaries)[2], 0.30, 1e-9);
  EXPECT_NE(statedSpace(record, CGColorSpaceModel::rgb), nullptr);
}

TEST_F(PngColour, OfGammaAndChromaticitiesIsBoth) {
  Bytes numbers;
  for (const std::uint32_t number : {31270u, 32900u, 64000u, 33000u, 21000u, 71000u, 15000u, 6000u}) {
    for (const int shift : {24, 16, 8, 0}) numbers.push_back(static_cast<std::uint8_t>(number >> shift));
  }
  const auto record = recordOf(rgb_, {gammaChunk(1, 0x86, 0xA0), pngChunk("cHRM", numbers)});
  ASSERT_TRUE(std::holds_alternative<Calibrated>(record));
  EXPECT_NEAR(std::get<Calibrated>(record).gamma, 1.0, 1e-9);
  EXPECT_NEAR((*std::get<Calibrated>(record).primaries)[3], 0.71, 1e-9);
  EXPECT_TRUE(std::holds_alternative<Untagged>(recordOf(rgb_, {pngChunk("cHRM", numbers)}))) << "no curve";
}

Bytes codePoints(std::uint8_t primaries, std::uint8_t transfer, std::uint8_t matrix = 0,
                 std::uint8_t fullRange = 1) {
  return pngChunk("cICP", Bytes{primaries, transfer, matrix, fullRange});
}

TEST_F(PngColour, OfCodePointsHoldsOverTheSRgbMarkAndUnderAProfile) {
  const Bytes p3 = codePoints(12, 13), adobe = iccChunk(profileOf(kCGColorSpaceAdobeRGB1998));
  EXPECT_EQ(nameIn(recordOf(rgb_, {p3, srgb_, gamma_})), kCGColorSpaceDisplayP3);
  const auto record = recordOf(rgb_, {p3, srgb_, gamma_, adobe});
  EXPECT_EQ(statedSpace(record, CGColorSpaceModel::rgb)->name(), kCGColorSpaceAdobeRGB1998);
}

TEST_F(PngColour, OfCodePointsThatNoSpaceSaysIsTheNextMark) {
  constexpr std::uint8_t kLogarithm = 9;
  for (const Bytes& unknown :
       {codePoints(99, 13), codePoints(9, kLogarithm), codePoints(12, 13, 1), codePoints(12, 13, 0, 0)})
    EXPECT_EQ(nameIn(recordOf(rgb_, {unknown, srgb_})), kCGColorSpaceSRGB);
  EXPECT_TRUE(std::holds_alternative<Untagged>(recordOf(rgb_, {codePoints(9, kLogarithm)})));
}

TEST_F(PngColour, OfHighDynamicRangeIsAProfileOfIt) {
  constexpr std::uint8_t kPerceptualQuantizer = 16, kHybridLog = 18;
  for (const auto& [transfer, name] : {std::pair{kPerceptualQuantizer, "Rec. ITU-R BT.2100 PQ"},
                                       std::pair{kHybridLog, "Rec. ITU-R BT.2100 HLG"}}) {
    const auto space = statedSpace(recordOf(rgb_, {codePoints(9, transfer), srgb_}), CGColorSpaceModel::rgb);
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(space->profileDescription(), name);
  }
}

TEST_F(PngColour, OfCodePointsOnGrayIsTheirCurve) {
  const auto spaceOf = [&](std::uint8_t transfer) {
    return statedSpace(recordOf(gray_, {codePoints(12, transfer)}), CGColorSpaceModel::monochrome);
  };
  ASSERT_NE(spaceOf(13), nullptr);
  EXPECT_EQ(spaceOf(13)->name(), kCGColorSpaceGenericGrayGamma2_2);
  ASSERT_NE(spaceOf(8), nullptr);
  EXPECT_FALSE(spaceOf(8)->name());
}

TEST_F(PngColour, OfAProfileThatThePixelsCannotHaveIsNone) {
  const Bytes gray = iccChunk(profileOf(kCGColorSpaceGenericGrayGamma2_2)),
              colour = iccChunk(profileOf(kCGColorSpaceDisplayP3)), noProfile = iccChunk(Bytes(200, 7));
  for (const auto& marks : {std::vector<Bytes>{gray}, {noProfile}, {gray, gamma_}, {gray, srgb_}})
    EXPECT_TRUE(std::holds_alternative<Untagged>(
        recordOf(rgb_, {marks.front(), marks.size() > 1 ? marks[1] : Bytes()})));
  EXPECT_TRUE(std::holds_alternative<Untagged>(recordOf(gray_, {colour})));
}

TEST_F(PngColour, OfImpossibleChromaticitiesIsTheGammaAlone) {
  const auto record = recordOf(rgb_, {gammaChunk(1, 0x86, 0xA0), pngChunk("cHRM", Bytes(32, 0))});
  ASSERT_TRUE(std::holds_alternative<Calibrated>(record));
  EXPECT_NEAR(std::get<Calibrated>(record).white[0], 0.3127, 1e-9);
}

TEST_F(PngColour, WithAWrongChecksumDoesNotCount) {
  for (Bytes chunk : {codePoints(12, 13), gamma_, srgb_, iccChunk(profileOf(kCGColorSpaceDisplayP3))}) {
    chunk.back() ^= 1;
    EXPECT_TRUE(std::holds_alternative<Untagged>(recordOf(rgb_, {chunk})));
  }
}

TEST_F(PngColour, OfADamagedProfileFallsBackToTheNextMark) {
  Bytes chunk = iccChunk(profileOf(kCGColorSpaceDisplayP3));
  chunk[chunk.size() / 2] ^= 0x10;
  EXPECT_EQ(nameIn(recordOf(rgb_, {chunk, srgb_})), kCGColorSpaceSRGB);
}

TEST_F(PngColour, AnSRgbMarkOnGrayIsItsCurve) {
  const auto record = recordOf(gray_, {srgb_});
  const auto space = statedSpace(record, CGColorSpaceModel::monochrome);
  ASSERT_NE(space, nullptr);
  EXPECT_EQ(space->name(), kCGColorSpaceGenericGrayGamma2_2);
  EXPECT_FALSE(std::get<Calibrated>(recordOf(gray_, {gamma_})).primaries);
}

TEST_F(PngColour, IsWrittenAsTheSRgbMarkOrAProfile) {
  Pixels pixels = decoded(rgb_);
  pixels.profile = NamedSpace{std::string(kCGColorSpaceSRGB)};
  const Bytes marked = encoded("public.png", pixels);
  EXPECT_LT(positionOf("sRGB", marked), marked.size());
  EXPECT_EQ(positionOf("iCCP", marked), marked.size());
  pixels.profile = NamedSpace{std::string(kCGColorSpaceDisplayP3)};
  const TemporaryFolder folder;
  writeFile(folder.path("a.png"), encoded("public.png", pixels));
  run({"convert", folder.path("a.png"), folder.path("out.icc")});
  EXPECT_EQ(readFile(folder.path("out.icc")), profileOf(kCGColorSpaceDisplayP3));
  OSTRA_NEEDS_PROGRAM("pngcheck");
  EXPECT_NE(run({"pngcheck", "-v", folder.path("a.png")}).find("No errors detected"), std::string::npos);
}

TEST_F(PngColour, WithAProfileThatIsNoneIsNotWritten) {
  Pixels pixels = decoded(rgb_);
  for (const Bytes& bad : {randomBytes(500), Bytes(130, 0), profileOf(kCGColorSpaceGenericGrayGamma2_2)}) {
    pixels.profile = IccProfile{bad};
    for (const char* type : {"public.png", "public.jpeg"})
      EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(type, pixels, nullptr))) << type;
  }
}

class JpegColour : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    file_ = madeByImageMagick({"-size", "8x8", "xc:red", "-strip"}, "jpg");
  }
  // Part `number` of `total`; the number counts from 1.
  static Bytes profileSegment(std::uint8_t number, std::uint8_t total, ByteView part) {
    return jpegSegment(0xE2, std::string_view{"ICC_PROFILE\0", 12},
                       joined({{number, total}, Bytes(part.begin(), part.end())}));
  }
  // An Exif block whose directories hold these 12-byte entries.
  static Bytes exifSegment(const std::string& colorSpace, const std::string& interop) {
    const TemporaryFolder folder;
    writeFile(folder.path("a.jpg"), madeByImageMagick({"-size", "8x8", "xc:red", "-strip"}, "jpg"));
    std::vector<std::string> words = {"exiftool", "-q", "-overwrite_original",
                                      "-ExifIFD:ColorSpace#=" + colorSpace};
    if (!interop.empty()) words.push_back("-InteropIndex#=" + interop);
    words.push_back(folder.path("a.jpg"));
    run(words);
    return readFile(folder.path("a.jpg"));
  }
  Bytes file_;
};

TEST_F(JpegColour, OfAProfileInSegmentsOutOfOrderIsTheWholeProfile) {
  const Bytes profile = profileOf(kCGColorSpaceDisplayP3);
  const ByteView view(profile);
  const Bytes first = profileSegment(1, 3, view.first(100)),
              second = profileSegment(2, 3, view.subspan(100, 100)),
              third = profileSegment(3, 3, view.subspan(200));
  const auto record = decoded(withJpegSegment(file_, joined({third, first, second}))).profile;
  ASSERT_TRUE(std::holds_alternative<IccProfile>(record));
  EXPECT_EQ(std::get<IccProfile>(record).bytes, profile);
  EXPECT_TRUE(
      std::holds_alternative<Untagged>(decoded(withJpegSegment(file_, joined({third, first}))).profile))
      << "a part is missing";
  EXPECT_TRUE(
      std::holds_alternative<Untagged>(decoded(withJpegSegment(file_, joined({first, second}))).profile))
      << "the last part is missing";
}

TEST_F(JpegColour, OfExifsMarksIsSRgbOrAdobeRgb) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  EXPECT_EQ(nameIn(decoded(exifSegment("1", "")).profile), kCGColorSpaceSRGB);
  EXPECT_EQ(nameIn(decoded(exifSegment("2", "")).profile), kCGColorSpaceAdobeRGB1998);
  EXPECT_EQ(nameIn(decoded(exifSegment("65535", "R03")).profile), kCGColorSpaceAdobeRGB1998);
  EXPECT_EQ(nameIn(decoded(exifSegment("65535", "")).profile), "");
}

TEST_F(JpegColour, OfAProfileHoldsOverExifsMark) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const Bytes marked = exifSegment("65535", "R03");
  const Bytes profile = profileOf(kCGColorSpaceDisplayP3);
  const auto record = decoded(withJpegSegment(marked, profileSegment(1, 1, profile))).profile;
  EXPECT_TRUE(std::holds_alternative<IccProfile>(record));
}

TEST_F(JpegColour, OfAGrayProfileOnColourDoesNotCount) {
  const Bytes gray = profileOf(kCGColorSpaceGenericGrayGamma2_2);
  const Bytes file = withJpegSegment(file_, profileSegment(1, 1, gray));
  EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(file).profile));
  EXPECT_EQ(propertiesOf(file).tree.count("ProfileName"), 0u);
}

TEST_F(JpegColour, IsWrittenAsAProfileInAsManySegmentsAsItNeeds) {
  Pixels pixels = decoded(file_);
  // A real profile, made large by a tag that no reader asks for.
  Bytes large = profileOf(kCGColorSpaceDisplayP3);
  large.resize(150'000);
  for (int i = 0; i < 4; ++i)
    large[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(large.size() >> (24 - 8 * i));
  pixels.profile = IccProfile{large};
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), encoded("public.jpeg", pixels));
  run({"convert", folder.path("a.jpg"), folder.path("out.icc")});
  EXPECT_EQ(readFile(folder.path("out.icc")), large);
  EXPECT_EQ(std::get<IccProfile>(decoded(readFile(folder.path("a.jpg"))).profile).bytes, large);
}

}  // namespace
}  // namespace ostra::test
