#include <algorithm>
#include <cmath>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "platform/imageio/codec.h"
#include "tests/platform/imageio/bmp_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr unsigned kMap = 1, kRgb = 2, kGray = 3, kPacked = 8;
constexpr unsigned kRightToLeft = 0x10, kTopDown = 0x20;

struct Kind {
  const char* name;
  unsigned type;
  unsigned bits;
  unsigned descriptor = 0;
  unsigned mapBits = 0;
  unsigned mapFirst = 0;
  /// How far ImageMagick may be away; nothing where it does not read the variant as it is described.
  std::optional<int> peer = 0;
};
// It does not round five bits to eight.
constexpr int kHalfStep = 129;

struct Parts {
  Kind kind;
  std::uint32_t width = 0, height = 0;
  unsigned mapLength = 0;
  Bytes map, pixels;  // as stored, not packed
};

std::size_t bytesOf(unsigned bits) { return (bits + 7) / 8; }

// Pixels in short runs, so that both kinds of packets are met.
Parts partsOf(const Kind& kind, std::uint32_t width, std::uint32_t height) {
  Parts parts{kind, width, height, 0, {}, {}};
  if (kind.type % kPacked == kMap) {
    parts.mapLength = 37;
    parts.map = randomBytes(parts.mapLength * bytesOf(kind.mapBits), 3);
  }
  std::mt19937 random(5);
  Bytes pixel;
  for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
    if (i == 0 || random() % 3 == 0) {
      pixel = randomBytes(bytesOf(kind.bits), static_cast<unsigned>(random()));
      if (parts.mapLength > 0) {
        const auto index = static_cast<unsigned>(kind.mapFirst + random() % parts.mapLength);
        pixel = {static_cast<std::uint8_t>(index)};
        if (kind.bits == 16) pixel.push_back(static_cast<std::uint8_t>(index >> 8));
      }
    }
    parts.pixels.insert(parts.pixels.end(), pixel.begin(), pixel.end());
  }
  return parts;
}

// Runs and pixels of their own as they come, over the ends of rows too.
Bytes packed(const Bytes& pixels, std::size_t size) {
  Bytes code;
  const std::size_t count = pixels.size() / size;
  const auto same = [&](std::size_t a, std::size_t b) {
    return std::equal(&pixels[a * size], &pixels[a * size] + size, &pixels[b * size]);
  };
  for (std::size_t at = 0; at < count;) {
    std::size_t run = 1;
    while (at + run < count && run < 128 && same(at, at + run)) ++run;
    const bool repeats = run > 2;
    if (!repeats) run = std::min<std::size_t>(run + at % 5, count - at);
    code.push_back(static_cast<std::uint8_t>((repeats ? 0x80 : 0) | (run - 1)));
    code.insert(code.end(), &pixels[at * size], &pixels[at * size] + (repeats ? 1 : run) * size);
    at += run;
  }
  return code;
}

Bytes fileOf(const Parts& parts, std::string_view text = "") {
  const Kind& kind = parts.kind;
  Bytes file = {static_cast<std::uint8_t>(text.size()), static_cast<std::uint8_t>(parts.mapLength > 0),
                static_cast<std::uint8_t>(kind.type)};
  appendLittle(file, parts.mapLength > 0 ? kind.mapFirst : 0, 2);
  appendLittle(file, parts.mapLength, 2);
  appendLittle(file, kind.mapBits, 1);
  appendLittle(file, 0, 4);
  appendLittle(file, parts.width, 2);
  appendLittle(file, parts.height, 2);
  appendLittle(file, kind.bits, 1);
  appendLittle(file, kind.descriptor, 1);
  return joined({file, bytesOfText(text), parts.map,
                 kind.type > kPacked ? packed(parts.pixels, bytesOf(kind.bits)) : parts.pixels});
}

void appendColour(std::vector<std::uint16_t>& rgba, const std::uint8_t* stored, unsigned bits, bool alpha) {
  if (bits >= 24) {
    for (const int c : {2, 1, 0}) rgba.push_back(static_cast<std::uint16_t>(stored[c] * 257));
    rgba.push_back(static_cast<std::uint16_t>(alpha ? stored[3] * 257 : 65535));
    return;
  }
  const unsigned word = stored[0] | static_cast<unsigned>(stored[1]) << 8;
  for (const int shift : {10, 5, 0})
    rgba.push_back(static_cast<std::uint16_t>(std::lround((word >> shift & 31) * 255 / 31.0) * 257));
  rgba.push_back(static_cast<std::uint16_t>(alpha && word < 0x8000 ? 0 : 65535));
}

std::vector<std::uint16_t> expectedOf(const Parts& parts) {
  const Kind& kind = parts.kind;
  const bool alpha = (kind.descriptor & 15) != 0;
  const std::size_t size = bytesOf(kind.bits);
  std::vector<std::uint16_t> rgba;
  for (std::uint32_t y = 0; y < parts.height; ++y) {
    for (std::uint32_t x = 0; x < parts.width; ++x) {
      const std::size_t row = kind.descriptor & kTopDown ? y : parts.height - 1 - y;
      const std::size_t column = kind.descriptor & kRightToLeft ? parts.width - 1 - x : x;
      const std::uint8_t* pixel = &parts.pixels[(row * parts.width + column) * size];
      if (kind.type % kPacked == kGray) {
        for (int c = 0; c < 3; ++c) rgba.push_back(static_cast<std::uint16_t>(*pixel * 257));
        rgba.push_back(static_cast<std::uint16_t>(alpha ? pixel[1] * 257 : 65535));
      } else if (kind.type % kPacked == kMap) {
        const std::size_t index = (size == 1 ? *pixel : *pixel | std::size_t{pixel[1]} << 8) - kind.mapFirst;
        appendColour(rgba, &parts.map[index * bytesOf(kind.mapBits)], kind.mapBits, alpha);
      } else {
        appendColour(rgba, pixel, kind.bits, alpha);
      }
    }
  }
  return rgba;
}

const Kind kKinds[] = {
    {"MapOf24Bits", kMap, 8, 0, 24},
    {"MapOf24BitsFromAnIndexOn", kMap, 8, 0, 24, 100},
    {"MapOf24BitsAndWideIndices", kMap, 16, 0, 24, 300, std::nullopt},
    {"MapOf32Bits", kMap, 8, 8, 32},
    {"MapOf16Bits", kMap, 8, 0, 16, 0, kHalfStep},
    {"MapOf15Bits", kMap, 8, 0, 15, 0, kHalfStep},
    {"PackedMap", kMap + kPacked, 8, 0, 24},
    {"PackedMapTopDown", kMap + kPacked, 8, kTopDown, 24},
    {"Gray", kGray, 8},
    {"GrayFromTheTopRight", kGray, 8, kTopDown | kRightToLeft},
    {"GrayWithAlpha", kGray, 16, 8, 0, 0, std::nullopt},
    {"PackedGray", kGray + kPacked, 8},
    {"Rgb15", kRgb, 15, 0, 0, 0, kHalfStep},
    {"Rgb16", kRgb, 16, 0, 0, 0, kHalfStep},
    {"Rgb16WithAlpha", kRgb, 16, 1, 0, 0, kHalfStep},
    {"PackedRgb16", kRgb + kPacked, 16, 0, 0, 0, kHalfStep},
    {"Rgb24", kRgb, 24},
    {"Rgb24TopDown", kRgb, 24, kTopDown},
    {"Rgb24RightToLeft", kRgb, 24, kRightToLeft},
    {"Rgb24FromTheTopRight", kRgb, 24, kTopDown | kRightToLeft},
    {"PackedRgb24", kRgb + kPacked, 24},
    {"PackedRgb24FromTheTopRight", kRgb + kPacked, 24, kTopDown | kRightToLeft},
    {"Rgb32WithoutAlpha", kRgb, 32, 0, 0, 0, std::nullopt},
    {"Rgba32", kRgb, 32, 8},
    {"PackedRgba32TopDown", kRgb + kPacked, 32, kTopDown | 8},
};

std::vector<Kind> kindsOfImageMagick() {
  std::vector<Kind> kinds;
  for (const Kind& kind : kKinds)
    if (kind.peer) kinds.push_back(kind);
  return kinds;
}

class TgaReading : public testing::TestWithParam<Kind> {};

TEST_P(TgaReading, GivesThePixelsThatTheFormatDescribes) {
  for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 9U}, {kWidth, kHeight}}) {
    Parts parts = partsOf(GetParam(), width, height);
    // No alpha anywhere would be another matter.
    if (GetParam().type == kRgb) parts.pixels.back() |= 0x80;
    const Pixels pixels = decoded(fileOf(parts, "a text in front"));
    EXPECT_EQ(pixels.layout.width, width);
    EXPECT_EQ(asRgba16(pixels), expectedOf(parts)) << width << "x" << height;
  }
}

class TgaReadingBesideAnother : public testing::TestWithParam<Kind> {};

// It leaves turning the picture to whoever asks.
TEST_P(TgaReadingBesideAnother, GivesThePixelsThatImageMagickReads) {
  OSTRA_NEEDS_PROGRAM("convert");
  const TemporaryFolder folder;
  writeFile(folder.path("a.tga"), fileOf(partsOf(GetParam(), kWidth, kHeight)));
  const auto ours = asRgba16(decoded(readFile(folder.path("a.tga"))));
  const auto theirs = rgba16ByImageMagick(folder.path("a.tga"), {"-auto-orient"});
  ASSERT_EQ(ours.size(), theirs.size());
  for (std::size_t i = 0; i < ours.size(); ++i)
    ASSERT_LE(std::abs(int{ours[i]} - int{theirs[i]}), *GetParam().peer) << "sample " << i;
}

INSTANTIATE_TEST_SUITE_P(EveryKindThatItReads, TgaReadingBesideAnother,
                         testing::ValuesIn(kindsOfImageMagick()),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });
INSTANTIATE_TEST_SUITE_P(EveryKind, TgaReading, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });

const Kind& kindNamed(std::string_view name) {
  return *std::find_if(std::begin(kKinds), std::end(kKinds),
                       [&](const Kind& kind) { return name == kind.name; });
}

// The extension area with this kind of alpha, and the footer that says where it is.
Bytes withExtension(Bytes file, unsigned alphaKind) {
  const std::size_t at = file.size();
  appendLittle(file, 495, 2);
  file.resize(at + 494);
  appendLittle(file, alphaKind, 1);
  appendLittle(file, at, 4);
  appendLittle(file, 0, 4);
  return joined({file, bytesOfText("TRUEVISION-XFILE."), {0}});
}

Bytes pixelsOf32(Bytes pixels, unsigned descriptor) {
  return fileOf(
      {{"", kRgb, 32, descriptor}, static_cast<std::uint32_t>(pixels.size() / 4), 1, 0, {}, pixels});
}
Bytes decodedBytes(const Bytes& file) {
  const Pixels pixels = decoded(file);
  return {pixels.bytes.view.begin(), pixels.bytes.view.end()};
}

TEST(TgaAlpha, IsWhatTheExtensionAreaSays) {
  const Bytes pixels = {10, 20, 30, 128};
  EXPECT_EQ(decodedBytes(withExtension(pixelsOf32(pixels, 8), 0)), (Bytes{30, 20, 10, 128})) << "not said";
  EXPECT_EQ(decodedBytes(withExtension(pixelsOf32(pixels, 8), 1)), (Bytes{30, 20, 10, 255})) << "undefined";
  EXPECT_EQ(decodedBytes(withExtension(pixelsOf32(pixels, 8), 2)), (Bytes{30, 20, 10, 255})) << "to be kept";
  EXPECT_EQ(decodedBytes(withExtension(pixelsOf32(pixels, 0), 3)), (Bytes{30, 20, 10, 128})) << "useful";
  EXPECT_EQ(decodedBytes(withExtension(pixelsOf32(pixels, 8), 4)), (Bytes{60, 40, 20, 128}))
      << "premultiplied";
  EXPECT_EQ(decodedBytes(withExtension(pixelsOf32({200, 0, 9, 0, 200, 0, 9, 100}, 8), 4)),
            (Bytes{0, 0, 0, 0, 23, 0, 255, 100}));
}

TEST(TgaAlpha, OfZeroEverywhereIsNone) {
  EXPECT_EQ(decodedBytes(pixelsOf32({1, 2, 3, 0, 4, 5, 6, 0}, 8)), (Bytes{3, 2, 1, 255, 6, 5, 4, 255}));
  EXPECT_EQ(decodedBytes(pixelsOf32({1, 2, 3, 0, 4, 5, 6, 1}, 8)), (Bytes{3, 2, 1, 0, 6, 5, 4, 1}));
}

TEST(TgaMap, OfGraysIsAGrayPicture) {
  const Bytes file = fileOf({{"", kMap, 8, 0, 24}, 2, 1, 2, {9, 9, 9, 200, 200, 200}, {1, 0}});
  EXPECT_EQ(decoded(file).layout.model, CGColorSpaceModel::monochrome);
  EXPECT_EQ(decodedBytes(file), (Bytes{200, 9}));
}

TEST(TgaMap, IsNotReadBeyond) {
  for (const unsigned first : {0U, 1U}) {
    const Bytes file = fileOf({{"", kMap, 8, 0, 24, first}, 2, 1, 1, {9, 8, 7}, {0, 1}});
    EXPECT_EQ(faultOf(decodeBytes(file)), Fault{FaultKind::damaged});
  }
}

TEST(TgaProperties, TellSizeDepthModelAndPacking) {
  const Dictionary tree =
      propertiesOf(fileOf(partsOf(kindNamed("PackedRgba32TopDown"), kWidth, kHeight))).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(8));
  EXPECT_EQ(tree.at("ColorModel"), Value("RGB"));
  EXPECT_EQ(tree.at("HasAlpha"), Value(true));
  EXPECT_EQ(tree.at("{TGA}"), Value(Dictionary{{"Compression", Value(1)}}));
}

TEST(TgaWriting, KeepsThePackingOfTheSource) {
  for (const char* name : {"Rgb24", "PackedRgb24", "PackedGray", "PackedRgba32TopDown"}) {
    const Bytes source = fileOf(partsOf(kindNamed(name), kWidth, kHeight));
    const Properties properties = propertiesOf(source);
    const Bytes written = encoded("com.truevision.tga-image", decoded(source), &properties);
    EXPECT_EQ(written[2], source[2]) << name;
    EXPECT_EQ(asRgba16(decoded(written)), asRgba16(decoded(source))) << name;
  }
}

// Without a signature every field has to make sense.
TEST(TgaHeader, IsNotSeenInOtherFiles) {
  EXPECT_EQ(codecForBytes(Bytes(64, 0)), nullptr) << "zeros";
  EXPECT_EQ(
      codecForBytes(bytesOfText("{\"a\": [1, 2, 3], \"b\": \"some text of sixty-four bytes, or more\"}")),
      nullptr);
  const Bytes whole = fileOf(partsOf(kindNamed("MapOf24Bits"), kWidth, kHeight));
  ASSERT_NE(codecForBytes(ByteView(whole).first(64)), nullptr);
  const std::pair<std::size_t, std::uint8_t> wrong[] = {{1, 0},  {1, 2},   {2, 0},     {2, 4},
                                                        {2, 17}, {5, 0},   {7, 25},    {12, 0},
                                                        {14, 0}, {16, 24}, {17, 0x40}, {17, 9}};
  for (const auto& [at, value] : wrong) {
    Bytes bytes(whole.begin(), whole.begin() + 64);
    bytes[at] = value;
    if (at == 12 || at == 14) bytes[at + 1] = 0;
    EXPECT_EQ(codecForBytes(bytes), nullptr) << "byte " << at << " is " << int{value};
  }
  std::size_t taken = 0;
  for (unsigned seed = 0; seed < 20000; ++seed)
    taken += codecForBytes(randomBytes(64, seed)) != nullptr ? 1 : 0;
  EXPECT_EQ(taken, 0u) << "of 20,000 random files";
}

}  // namespace
}  // namespace ostra::test
