#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "tests/platform/imageio/psd_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

constexpr Fault kDamaged{FaultKind::damaged};

struct Kind {
  const char* name;
  unsigned mode, bits, channels;
};

constexpr Kind kKinds[] = {
    {"Bitmap", 0, 1, 1}, {"Gray8", 1, 8, 1}, {"Gray16", 1, 16, 1}, {"Indexed", 2, 8, 1}, {"Rgb8", 3, 8, 3},
    {"Rgb16", 3, 16, 3}, {"Cmyk8", 4, 8, 4}, {"Cmyk16", 4, 16, 4}, {"Duotone", 8, 8, 1},
};

struct Storage {
  Kind kind;
  bool isLarge, isPacked;
};

std::vector<Storage> allStorages() {
  std::vector<Storage> storages;
  for (const Kind& kind : kKinds) {
    for (const bool isLarge : {false, true}) {
      for (const bool isPacked : {false, true}) storages.push_back({kind, isLarge, isPacked});
    }
  }
  return storages;
}

PsdParts partsOf(const Storage& storage) {
  PsdParts parts;
  parts.mode = storage.kind.mode;
  parts.bits = storage.kind.bits;
  parts.channels = storage.kind.channels;
  parts.isLarge = storage.isLarge;
  parts.isPacked = storage.isPacked;
  if (parts.mode == 2) parts.colours = randomBytes(768, 9);
  if (parts.mode == 8) parts.colours = randomBytes(50, 9);
  return parts;
}

std::uint16_t storedSample(const PsdParts& parts, const Bytes& samples, unsigned channel, std::size_t pixel) {
  const std::size_t at = std::size_t{channel} * parts.width * parts.height + pixel;
  if (parts.bits == 16) return static_cast<std::uint16_t>(samples[2 * at] << 8 | samples[2 * at + 1]);
  return samples[at];
}

// What the stored samples say, at their own depth: gray repeated, ink as it is, 0 for none.
std::vector<std::uint16_t> expectedOf(const PsdParts& parts) {
  const Bytes samples = psdSamples(parts);
  std::vector<std::uint16_t> expected;
  for (std::size_t pixel = 0; pixel < std::size_t{parts.width} * parts.height; ++pixel) {
    const std::size_t x = pixel % parts.width, y = pixel / parts.width;
    for (unsigned c = 0; c < (parts.mode == 4 ? 4u : 3u); ++c) {
      if (parts.mode == 0) {
        const std::size_t byte = y * ((parts.width + 7) / 8) + x / 8;
        expected.push_back((samples[byte] >> (7 - x % 8) & 1) != 0 ? 0 : 255);
      } else if (parts.mode == 2) {
        expected.push_back(parts.colours[256 * std::size_t{c} + samples[pixel]]);
      } else {
        const std::uint16_t stored = storedSample(parts, samples, parts.channels == 1 ? 0 : c, pixel);
        expected.push_back(
            parts.mode == 4 ? static_cast<std::uint16_t>((parts.bits == 16 ? 65535 : 255) - stored) : stored);
      }
    }
  }
  return expected;
}

// The same of what was decoded.
std::vector<std::uint16_t> decodedSamples(const Pixels& pixels) {
  const Layout& layout = pixels.layout;
  const std::size_t components = layout.bitsPerPixel / layout.bitsPerComponent;
  const bool gray = layout.model == CGColorSpaceModel::monochrome;
  std::vector<std::uint16_t> samples;
  for (std::size_t pixel = 0; pixel < std::size_t{layout.width} * layout.height; ++pixel) {
    for (std::size_t c = 0; c < (layout.model == CGColorSpaceModel::cmyk ? 4u : 3u); ++c) {
      const std::size_t at = pixel * components + (gray ? 0 : c);
      const std::uint8_t* bytes = pixels.bytes.view.data();
      samples.push_back(layout.bitsPerComponent == 8
                            ? bytes[at]
                            : static_cast<std::uint16_t>(bytes[2 * at] | bytes[2 * at + 1] << 8));
    }
  }
  return samples;
}

class PsdReading : public testing::TestWithParam<Storage> {};

TEST_P(PsdReading, GivesTheSamplesThatAreStored) {
  const PsdParts parts = partsOf(GetParam());
  const Pixels pixels = decoded(psdOf(parts));
  EXPECT_EQ(pixels.layout.width, kWidth);
  EXPECT_EQ(pixels.layout.height, kHeight);
  EXPECT_EQ(pixels.layout.bitsPerComponent, parts.bits == 16 ? 16 : 8);
  EXPECT_EQ(decodedSamples(pixels), expectedOf(parts));
}

TEST_P(PsdReading, GivesThePixelsThatImageMagickReads) {
  OSTRA_NEEDS_PROGRAM("convert");
  const PsdParts parts = partsOf(GetParam());
  if (parts.mode == 8) GTEST_SKIP() << "ImageMagick reads a duotone as something else";
  if (parts.mode == 2) GTEST_SKIP() << "ImageMagick 6.9 refuses documents with a palette, its own too";
  const TemporaryFolder folder;
  writeFile(folder.path("a.psd"), psdOf(parts));
  const Pixels pixels = decoded(psdOf(parts));
  const char* map = parts.mode == 4 ? "cmyk:" : "rgb:";
  run({"convert", folder.path("a.psd") + "[0]", "-depth", std::to_string(pixels.layout.bitsPerComponent),
       "-endian", "LSB", map + folder.path("raw")});
  const Bytes theirs = readFile(folder.path("raw"));
  const auto ours = decodedSamples(pixels);
  const bool deep = pixels.layout.bitsPerComponent == 16;
  ASSERT_EQ(theirs.size(), ours.size() * (deep ? 2 : 1));
  for (std::size_t i = 0; i < ours.size(); ++i)
    ASSERT_EQ(deep ? theirs[2 * i] | theirs[2 * i + 1] << 8 : theirs[i], ours[i]) << "sample " << i;
}

TEST_P(PsdReading, RefusesAFileThatIsCutOff) {
  const Bytes file = psdOf(partsOf(GetParam()));
  for (std::size_t i = 0; i < 60; ++i) {
    const std::size_t size = i < 40 ? file.size() * i / 40 : file.size() - 1 - (59 - i);
    ASSERT_TRUE(faultOf(decodeBytes(ByteView(file).first(size)))) << size << " of " << file.size();
  }
}

TEST_P(PsdReading, TellsSizeDepthAndModel) {
  const PsdParts parts = partsOf(GetParam());
  const Dictionary tree = propertiesOf(psdOf(parts)).tree;
  EXPECT_EQ(tree.at("PixelWidth"), Value(47));
  EXPECT_EQ(tree.at("PixelHeight"), Value(33));
  EXPECT_EQ(tree.at("Depth"), Value(std::int64_t{parts.bits}));
  EXPECT_EQ(tree.at("ColorModel"), Value(parts.mode == 4                      ? "CMYK"
                                         : parts.mode == 2 || parts.mode == 3 ? "RGB"
                                                                              : "Gray"));
  EXPECT_EQ(tree.count("IsIndexed"), parts.mode == 2 ? 1u : 0u);
  EXPECT_EQ(tree.count("HasAlpha"), 0u);
}

std::string nameOf(const testing::TestParamInfo<Storage>& info) {
  const Storage& storage = info.param;
  return std::string(storage.kind.name) + (storage.isLarge ? "Large" : "") +
         (storage.isPacked ? "Packed" : "");
}

INSTANTIATE_TEST_SUITE_P(EveryKind, PsdReading, testing::ValuesIn(allStorages()), nameOf);

TEST(PsdOfImageMagick, IsReadAsImageMagickReadsIt) {
  OSTRA_NEEDS_PROGRAM("convert");
  for (const char* compression : {"None", "RLE"}) {
    for (const char* depth : {"8", "16"}) {
      const Bytes file = madeByImageMagick({"-size", "97x61", "-seed", "3", "plasma:tomato-steelblue",
                                            "-depth", depth, "-compress", compression},
                                           "psd");
      const TemporaryFolder folder;
      writeFile(folder.path("a.psd"), file);
      EXPECT_EQ(asRgba16(decoded(file)), rgba16ByImageMagick(folder.path("a.psd") + "[0]"))
          << compression << depth;
    }
  }
}

// Colours as they are stored lie on white; what they were before is told by the opacity.
TEST(PsdTransparency, IsTakenOffTheWhiteThatItLiesOn) {
  for (const bool isLarge : {false, true}) {
    for (const unsigned bits : {8u, 16u}) {
      PsdParts parts;
      parts.isLarge = isLarge;
      parts.bits = bits;
      parts.channels = 4;
      parts.width = 256;
      parts.height = 1;
      parts.layers = psdTransparentLayers(isLarge);
      const double own[] = {0.2, 0.5, 1};
      const unsigned most = bits == 8 ? 255 : 65535;
      for (unsigned c = 0; c < 4; ++c) {
        for (unsigned alpha = 0; alpha < 256; ++alpha) {
          const double share = alpha / 255.0;
          const auto sample =
              static_cast<unsigned>(std::lround(most * (c == 3 ? share : own[c] * share + 1 - share)));
          if (bits == 16) parts.samples.push_back(static_cast<std::uint8_t>(sample >> 8));
          parts.samples.push_back(static_cast<std::uint8_t>(sample));
        }
      }
      const Pixels pixels = decoded(psdOf(parts));
      EXPECT_EQ(pixels.layout.bitmapInfo & kCGBitmapAlphaInfoMask,
                static_cast<CGBitmapInfo>(CGImageAlphaInfo::last));
      const auto samples = asRgba16(pixels);
      for (std::size_t alpha = 1; alpha < 256; ++alpha) {
        EXPECT_EQ(samples[4 * alpha + 3], alpha * 257);
        const double tolerance = (bits == 8 ? 257.0 : 1.0) * 255 / static_cast<double>(alpha) + 1;
        for (std::size_t c = 0; c < 3; ++c)
          ASSERT_NEAR(samples[4 * alpha + c], own[c] * 65535, tolerance) << alpha;
      }
      EXPECT_EQ(samples[3], 0);
    }
  }
}

TEST(PsdTransparency, IsNoOtherFurtherChannel) {
  PsdParts parts;
  parts.channels = 5;  // a selection and a spot colour
  parts.layers = {0, 0, 0, 2, 0, 1, 0, 0, 0, 0};
  const Pixels pixels = decoded(psdOf(parts));
  EXPECT_EQ(pixels.layout.bitmapInfo & kCGBitmapAlphaInfoMask,
            static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast));
  EXPECT_EQ(decodedSamples(pixels), expectedOf(parts));
}

TEST(PsdTransparency, OfAPaletteEntryIsRead) {
  PsdParts parts;
  parts.mode = 2;
  parts.channels = 1;
  parts.colours = randomBytes(768, 9);
  parts.resources = psdResource(1047, {0, psdSamples(parts)[0]});
  const auto samples = asRgba16(decoded(psdOf(parts)));
  EXPECT_EQ(samples[3], 0);
  EXPECT_EQ(samples[0], 0);
  EXPECT_EQ(std::count(samples.begin(), samples.end(), 65535) > 100, true);
}

TEST(PsdFloats, BecomeWhatSrgbStoresForTheirLight) {
  const float lights[] = {0, 0.0031308F, 0.18F, 0.5F, 1, 1.5F, -2, NAN, INFINITY};
  const double values[] = {0, 0.04045, 0.4613561, 0.7353569, 1, 1, 0, 0, 1};
  PsdParts parts;
  parts.mode = 1;
  parts.bits = 32;
  parts.channels = 1;
  parts.width = 9;
  parts.height = 1;
  for (const float light : lights) {
    std::uint32_t word = 0;
    std::memcpy(&word, &light, 4);
    for (const int shift : {24, 16, 8, 0}) parts.samples.push_back(static_cast<std::uint8_t>(word >> shift));
  }
  const Pixels pixels = decoded(psdOf(parts));
  EXPECT_EQ(std::get<NamedSpace>(pixels.profile).name, kCGColorSpaceSRGB);
  const auto samples = asRgba16(pixels);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(samples[4 * i], values[i] * 65535, 1) << i;
  EXPECT_EQ(propertiesOf(psdOf(parts)).tree.at("IsFloat"), Value(true));
}

// A profile knows the curve that its samples have.
TEST(PsdFloats, StayLinearUnderAProfile) {
  PsdParts parts;
  parts.bits = 32;
  parts.width = parts.height = 1;
  const auto profile = CGColorSpace::createWithName(kCGColorSpaceLinearSRGB)->iccData();
  parts.resources = psdResource(1039, Bytes(profile.begin(), profile.end()));
  parts.samples = {0x3F, 0, 0, 0, 0x3E, 0x80, 0, 0, 0x3F, 0x80, 0, 0};  // 0.5, 0.25, 1
  const auto samples = asRgba16(decoded(psdOf(parts)));
  EXPECT_NEAR(samples[0], 32768, 1);
  EXPECT_NEAR(samples[1], 16384, 1);
  EXPECT_EQ(samples[2], 65535);
}

TEST(PsdRefusal, OfWhatHasNoMergedPicture) {
  PsdParts parts;
  parts.resources = psdResource(1057, {0, 0, 0, 1, 1});
  EXPECT_FALSE(faultOf(decodeBytes(psdOf(parts))));
  parts.resources = psdResource(1057, {0, 0, 0, 1, 0});
  EXPECT_EQ(faultOf(decodeBytes(psdOf(parts))), kDamaged);
}

TEST(PsdRefusal, OfHostileHeaders) {
  const auto isRefused = [](auto change) {
    PsdParts parts;
    Bytes file = psdOf(parts);
    change(file);
    return faultOf(decodeBytes(file)).has_value();
  };
  EXPECT_FALSE(isRefused([](Bytes&) {}));
  EXPECT_TRUE(isRefused([](Bytes& file) { file[5] = 3; })) << "version";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[13] = 2; })) << "too few channels";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[13] = 57; })) << "too many";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[16] = file[17] = 0; })) << "no height";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[18] = 0x7F; })) << "width";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[23] = 7; })) << "depth";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[25] = 7; })) << "multichannel";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[26] = 0x7F; })) << "a palette beyond the end";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[30] = 0x7F; })) << "resources";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[34] = 0x7F; })) << "layers";
  EXPECT_TRUE(isRefused([](Bytes& file) { file[39] = 2; })) << "a compression that merged pictures have not";
}

TEST(PsdRefusal, OfRowsThatMakeMoreOrLess) {
  PsdParts parts;
  parts.isPacked = true;
  parts.width = 4;
  parts.height = 1;
  parts.mode = 1;
  parts.channels = 1;
  const Bytes head = psdOf(parts);
  const auto withRow = [&](const Bytes& row) {
    Bytes file(head.begin(), head.begin() + 40);
    return joined({file, {0, static_cast<std::uint8_t>(row.size())}, row});
  };
  EXPECT_FALSE(faultOf(decodeBytes(withRow({3, 1, 2, 3, 4}))));
  EXPECT_FALSE(faultOf(decodeBytes(withRow({253, 9}))));
  EXPECT_EQ(faultOf(decodeBytes(withRow({252, 9}))), kDamaged) << "five";
  EXPECT_EQ(faultOf(decodeBytes(withRow({2, 1, 2, 3}))), kDamaged) << "three";
  EXPECT_EQ(faultOf(decodeBytes(withRow({3, 1, 2, 3}))), kDamaged) << "a piece that is cut";
  EXPECT_EQ(faultOf(decodeBytes(withRow({253}))), kDamaged);
}

TEST(PsdLimits, StopBeforeAnythingIsAllocated) {
  PsdParts parts;
  Bytes file = psdOf(parts);
  file[16] = file[20] = 0x75;  // 29,985 high, 29,999 wide: 899 megapixels
  EXPECT_EQ(faultOf(decodeBytes(file)), (Fault{FaultKind::limit, LimitName::compressionRatio}));
  Limits tight;
  tight.metadataBytes = 10;
  parts.resources = psdResource(1060, Bytes(40, 'x'));
  EXPECT_EQ(faultOf(decodeBytes(psdOf(parts), tight)), (Fault{FaultKind::limit, LimitName::metadataBytes}));
}

TEST(PsdMetadata, IsReadFromItsResources) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const TemporaryFolder folder;
  PsdParts parts;
  parts.resources = psdResource(1005, Bytes{0, 72, 0, 0, 0, 1, 0, 1, 0, 72, 0, 0, 0, 1, 0, 1});
  writeFile(folder.path("a.psd"), psdOf(parts));
  run({"exiftool", "-q", "-overwrite_original", "-EXIF:Make=Maker", "-EXIF:ExposureTime=1/60",
       "-IPTC:Headline=H", "-XMP-dc:Title=T", "-Photoshop:XResolution=144", "-Photoshop:YResolution=144",
       "-Orientation#=6", folder.path("a.psd")});
  const Properties properties = propertiesOf(readFile(folder.path("a.psd")));
  EXPECT_EQ(properties.tree.at("{TIFF}").get<Dictionary>()->at("Make"), Value("Maker"));
  EXPECT_EQ(properties.tree.at("{IPTC}").get<Dictionary>()->at("Headline"), Value("H"));
  EXPECT_EQ(properties.tree.at("Orientation"), Value(6));
  EXPECT_EQ(*properties.tree.at("DPIWidth").number(), 144);
  // And from there they reach a PNG.
  writeFile(folder.path("a.png"), encoded("public.png", decoded(psdOf(parts)), &properties));
  EXPECT_EQ(run({"exiftool", "-s3", "-EXIF:Make", "-EXIF:ExposureTime", "-IPTC:Headline", "-XMP-dc:Title",
                 folder.path("a.png")}),
            "Maker\n1/60\nH\nT\n");
}

TEST(PsdMetadata, OfTheDocumentAloneIsLeftBehind) {
  PsdParts parts;
  parts.resources =
      joined({psdResource(1036, Bytes(20, 1)), psdResource(1039, Bytes(20, 2)),
              psdResource(1058, Bytes(9, 3)), psdResource(1024, {0, 1}), psdResource(1034, {1})});
  const auto carrier = propertiesOf(psdOf(parts)).carrier;
  ASSERT_NE(carrier, nullptr);
  EXPECT_EQ(carrier->photoshopResources, psdResource(1034, {1}));
}

TEST(PsdProfile, IsReadWhereItFits) {
  const auto profile = CGColorSpace::createWithName(kCGColorSpaceDisplayP3)->iccData();
  PsdParts parts;
  parts.resources = psdResource(1039, Bytes(profile.begin(), profile.end()));
  EXPECT_EQ(propertiesOf(psdOf(parts)).tree.at("ProfileName"), Value("Display P3"));
  EXPECT_TRUE(std::holds_alternative<IccProfile>(decoded(psdOf(parts)).profile));
  parts.mode = 1;
  parts.channels = 1;
  EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(psdOf(parts)).profile));
}

}  // namespace
}  // namespace ostra::test
