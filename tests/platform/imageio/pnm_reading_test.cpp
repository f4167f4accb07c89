#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

struct Kind {
  const char* name;
  char magic;
  unsigned samples;
  unsigned largest;
  const char* tuple = "";
};

struct File {
  Bytes bytes;
  std::vector<std::uint16_t> rgba;  // as asRgba16 has it
};

std::string headerOf(const Kind& kind, std::uint32_t width, std::uint32_t height) {
  const std::string size = std::to_string(width) + " " + std::to_string(height) + "\n";
  const std::string largest = std::to_string(kind.largest) + "\n";
  if (kind.magic == '1' || kind.magic == '4') return std::string("P") + kind.magic + "\n" + size;
  if (kind.magic != '7') return std::string("P") + kind.magic + "\n" + size + largest;
  return "P7\nWIDTH " + std::to_string(width) + "\nHEIGHT " + std::to_string(height) + "\nDEPTH " +
         std::to_string(kind.samples) + "\nMAXVAL " + largest + "TUPLTYPE " + kind.tuple + "\nENDHDR\n";
}

// Random samples, stored as the kind stores them.
File fileOf(const Kind& kind, std::uint32_t width, std::uint32_t height) {
  std::mt19937 random(11);
  File file;
  file.bytes = bytesOfText(headerOf(kind, width, height));
  const bool bits = kind.magic == '1' || kind.magic == '4', text = kind.magic <= '3';
  const bool alpha = kind.samples % 2 == 0;
  const double full = kind.largest > 255 ? 65535 : 255;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      std::vector<std::uint16_t> pixel;
      for (unsigned i = 0; i < kind.samples; ++i) {
        const auto value = static_cast<unsigned>(random() % (kind.largest + 1));
        if (text) {
          const Bytes word = bytesOfText(std::to_string(value) + (bits ? "" : i % 2 == 0 ? " " : "\n"));
          file.bytes.insert(file.bytes.end(), word.begin(), word.end());
        } else if (bits) {
          if (x % 8 == 0) file.bytes.push_back(0);
          file.bytes.back() |= static_cast<std::uint8_t>(value << (7 - x % 8));
        } else {
          if (kind.largest > 255) file.bytes.push_back(static_cast<std::uint8_t>(value >> 8));
          file.bytes.push_back(static_cast<std::uint8_t>(value));
        }
        const double level = bits ? 1 - value : static_cast<double>(value) / kind.largest;
        const double sample = std::floor(level * full + 0.5);
        pixel.push_back(static_cast<std::uint16_t>(full > 255 ? sample : sample * 257));
      }
      for (unsigned c = 0; c < 3; ++c) file.rgba.push_back(pixel[kind.samples > 2 ? c : 0]);
      file.rgba.push_back(alpha ? pixel.back() : std::uint16_t{65535});
    }
  }
  return file;
}

const Kind kKinds[] = {
    {"BitsInText", '1', 1, 1},
    {"GrayInText", '2', 1, 255},
    {"GrayInTextOfFewLevels", '2', 1, 6},
    {"DeepGrayInText", '2', 1, 65535},
    {"RgbInText", '3', 3, 255},
    {"DeepRgbInText", '3', 3, 1023},
    {"Bits", '4', 1, 1},
    {"Gray", '5', 1, 255},
    {"GrayOfFewLevels", '5', 1, 15},
    {"GrayOfTwelveBits", '5', 1, 4095},
    {"DeepGray", '5', 1, 65535},
    {"Rgb", '6', 3, 255},
    {"RgbOfSevenBits", '6', 3, 127},
    {"RgbOfNineBits", '6', 3, 256},
    {"DeepRgb", '6', 3, 65535},
    {"PamOfBits", '7', 1, 1, "BLACKANDWHITE"},
    {"PamOfGray", '7', 1, 255, "GRAYSCALE"},
    {"PamOfGrayWithAlpha", '7', 2, 255, "GRAYSCALE_ALPHA"},
    {"PamOfDeepGrayWithAlpha", '7', 2, 65535, "GRAYSCALE_ALPHA"},
    {"PamOfRgb", '7', 3, 255, "RGB"},
    {"PamOfDeepRgb", '7', 3, 4095, "RGB"},
    {"PamOfRgbWithAlpha", '7', 4, 255, "RGB_ALPHA"},
    {"PamOfDeepRgbWithAlpha", '7', 4, 65535, "RGB_ALPHA"},
    {"PamOfNoTypeWithAlpha", '7', 4, 255, ""},
};

std::vector<Kind> kindsOfImageMagick() {
  std::vector<Kind> kinds;
  for (const Kind& kind : kKinds)
    if (kind.samples != 4 || *kind.tuple != 0) kinds.push_back(kind);
  return kinds;
}

class PnmReading : public testing::TestWithParam<Kind> {};

TEST_P(PnmReading, GivesTheSamplesScaledToTheWholeRange) {
  for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 9U}, {kWidth, kHeight}}) {
    const File file = fileOf(GetParam(), width, height);
    const Pixels pixels = decoded(file.bytes);
    EXPECT_EQ(pixels.layout.width, width);
    EXPECT_EQ(pixels.layout.bitsPerComponent, GetParam().largest > 255 ? 16 : 8);
    EXPECT_EQ(asRgba16(pixels), file.rgba) << width << "x" << height;
  }
}

class PnmReadingBesideAnother : public testing::TestWithParam<Kind> {};

// It keeps more bits of a sample than 8 where the largest is none of 1, 3, 15 and 255.
TEST_P(PnmReadingBesideAnother, GivesThePixelsThatImageMagickReads) {
  OSTRA_NEEDS_PROGRAM("convert");
  const TemporaryFolder folder;
  const File file = fileOf(GetParam(), kWidth, kHeight);
  writeFile(folder.path("a.pnm"), file.bytes);
  const auto ours = asRgba16(decoded(file.bytes)), theirs = rgba16ByImageMagick(folder.path("a.pnm"));
  ASSERT_EQ(ours.size(), theirs.size());
  const unsigned largest = GetParam().largest;
  const int most = largest > 255 ? 1 : 255 % largest == 0 ? 0 : 129;
  for (std::size_t i = 0; i < ours.size(); ++i)
    ASSERT_LE(std::abs(int{ours[i]} - int{theirs[i]}), most) << "sample " << i;
}

INSTANTIATE_TEST_SUITE_P(EveryKindThatItReads, PnmReadingBesideAnother,
                         testing::ValuesIn(kindsOfImageMagick()),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });
INSTANTIATE_TEST_SUITE_P(EveryKind, PnmReading, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });

Opened openedOf(std::string_view text) {
  return std::get<std::unique_ptr<Reader>>(openBytes(bytesOfText(text)))->opened();
}
std::optional<Bytes> samplesOf(std::string_view text) {
  const auto answer = decodeBytes(bytesOfText(text));
  const auto* pixels = std::get_if<Pixels>(&answer);
  if (pixels == nullptr) return std::nullopt;
  return Bytes(pixels->bytes.view.begin(), pixels->bytes.view.end());
}

TEST(PnmCount, IsThatOfThePicturesOneBehindTheOther) {
  EXPECT_EQ(openedOf("P5 1 1 255 a").count, 1u);
  EXPECT_EQ(openedOf("P5 1 1 255 aP5 1 1 255 b").count, 2u);
  EXPECT_EQ(openedOf("P5 1 1 255 a\nP6 1 1 255 bcdP4 1 1 e").count, 3u);
  EXPECT_EQ(openedOf("P5 1 1 255 aP5 9 9 255 cut off").count, 2u);
  EXPECT_EQ(openedOf("P5 1 1 255 aP5 no picture").count, 1u);
  EXPECT_EQ(openedOf("P5 1 1 255 P").count, 1u);
  EXPECT_EQ(openedOf("P2 1 1 255 7 # P2 1 1 255 8\nP2 1 1 255 9").count, 2u) << "not in a comment";
  EXPECT_EQ(samplesOf("P5 1 1 255 aP5 1 1 255 b"), Bytes{'a'});
}

TEST(PnmHeader, HoldsCommentsAnywhere) {
  EXPECT_EQ(samplesOf("P5# one\n1 #two\n2\n# three\n255\nab"), (Bytes{'a', 'b'}));
  EXPECT_EQ(samplesOf("P5 2 1 255# one\nab"), (Bytes{'a', 'b'}));
  EXPECT_EQ(samplesOf("P2 2 1 255 7 # one 8\n9"), (Bytes{7, 9}));
  const auto properties = propertiesOf(bytesOfText("P5\n# one\n#two\n1 1 255 a"));
  EXPECT_EQ(properties.carrier->comments, (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(propertiesOf(bytesOfText("P7\n# one\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\na"))
                .carrier->comments,
            std::vector<std::string>{"one"});
}

TEST(PnmHeader, EndsWithOneSpace) {
  EXPECT_EQ(samplesOf("P5 1 1 255  "), Bytes{' '});
  EXPECT_EQ(samplesOf("P5 1 1 255\n#"), Bytes{'#'});
}

TEST(PnmComments, AreWrittenAgain) {
  const Bytes file = bytesOfText("P5\n# one\n# two\n1 1 255 a");
  const Properties properties = propertiesOf(file);
  const Bytes written = encoded("public.pbm", decoded(file), &properties);
  EXPECT_EQ(std::string(written.begin(), written.end()), "P5\n# one\n# two\n1 1\n255\na");
}

TEST(PnmSamples, BeyondTheLargestAreRefused) {
  EXPECT_EQ(samplesOf("P5 1 1 96 a"), std::nullopt);
  EXPECT_EQ(samplesOf("P5 1 1 97 a"), Bytes{255});
  EXPECT_EQ(samplesOf("P2 1 1 9 10"), std::nullopt);
  EXPECT_EQ(samplesOf("P2 1 1 9 65545"), std::nullopt);
  EXPECT_EQ(samplesOf("P1 1 1 2"), std::nullopt);
}

TEST(PnmSamples, ThatNobodyKnowsAreRefused) {
  EXPECT_EQ(samplesOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\nabcd"),
            std::nullopt);
  EXPECT_EQ(samplesOf("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nENDHDR\nabcde"), std::nullopt);
}

TEST(PnmHeader, ThatIsNoneIsRefused) {
  for (const char* text :
       {"P5 0 1 255 ab", "P5 1 0 255 ab", "P5 1 1 0 ab", "P5 1 1 65536 ab", "P5 1 x1 255 ab", "P5 -1 1 255 a",
        "P5 4294967297 1 255 ab", "P5 1 1", "P6 1 1 255x   ", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\n"})
    EXPECT_EQ(samplesOf(text), std::nullopt) << text;
}

TEST(PnmSignature, IsNotSeenInText) {
  for (const char* text : {"P1 is the first", "P5\nis no number", "P8 1 1 255 a", "P51 1 255 a",
                           "P7 332\n80 60 255\n", "PS-Adobe", "Pictures of"})
    EXPECT_EQ(codecForBytes(bytesOfText(text)), nullptr) << text;
}

TEST(PnmProperties, TellSizeDepthAndModel) {
  const Dictionary tree = propertiesOf(fileOf(kKinds[9], kWidth, kHeight).bytes).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(12));
  EXPECT_EQ(tree.at("ColorModel"), Value("Gray"));
  EXPECT_EQ(tree.count("HasAlpha"), 0u);
  EXPECT_EQ(propertiesOf(fileOf(kKinds[21], 2, 2).bytes).tree.at("HasAlpha"), Value(true));
}

}  // namespace
}  // namespace ostra::test
