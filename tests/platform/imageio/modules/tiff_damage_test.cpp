#include <random>

#include <gtest/gtest.h>

#include "tests/platform/imageio/modules/tiff_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using Words = std::vector<std::string>;

constexpr std::uint16_t kBlackIsZero = 1, kRgb = 2, kPalette = 3, kYcc = 6;

/// A file of each way in which pixels are packed.
class TiffDamage : public testing::TestWithParam<Words> {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "tiffcp"}) OSTRA_NEEDS_PROGRAM(name);
    const bool bilevel = GetParam()[1] == "g4" || GetParam()[1] == "g3";
    Words make = {"convert", "-size", "23x17", "-seed", "3", "plasma:tomato-steelblue", "-depth", "8"};
    if (bilevel) make.insert(make.end(), {"-type", "bilevel", "-depth", "1"});
    make.push_back(folder.path("a.tif"));
    run(make);
    Words copy = {"tiffcp"};
    copy.insert(copy.end(), GetParam().begin(), GetParam().end());
    copy.insert(copy.end(), {folder.path("a.tif"), folder.path("b.tif")});
    run(copy);
    file = readFile(folder.path("b.tif"));
    pixels = straightRgba16(decoded(file));
  }
  /// Refused, or nothing of the picture is missing.
  void expectAllOrNothing(ByteView damaged, std::size_t place) const {
    const auto answer = decodeBytes(damaged);
    const auto* read = std::get_if<Pixels>(&answer);
    EXPECT_TRUE(read == nullptr || straightRgba16(*read) == pixels) << place;
  }
  TemporaryFolder folder;
  Bytes file;
  std::vector<std::uint16_t> pixels;
};

// The tool writes the directory last, so the file is also cut with it in front.
TEST_P(TiffDamage, OneThatIsCutOffAnywhereIsRefusedWhole) {
  for (std::size_t size = 0; size < file.size(); ++size) expectAllOrNothing(ByteView(file).first(size), size);
  OSTRA_NEEDS_PROGRAM("exiftool");
  if (GetParam().back() == "-8") return;  // which that tool does not write
  run({"exiftool", "-q", "-overwrite_original", "-Make=N", folder.path("b.tif")});
  const Bytes front = readFile(folder.path("b.tif"));
  std::size_t refused = 0;
  for (std::size_t size = 0; size < front.size(); ++size) {
    expectAllOrNothing(ByteView(front).first(size), size);
    refused += faultOf(decodeBytes(ByteView(front).first(size))) ? 1 : 0;
  }
  EXPECT_GE(refused, front.size() - 3);
}

TEST_P(TiffDamage, OneWithWrongBytesCostsNothingButItself) {
  std::mt19937 random(11);
  for (int round = 0; round < 400; ++round) {
    Bytes damaged = file;
    for (int i = 0; i < 1 + round % 4; ++i)
      damaged[8 + random() % (file.size() - 8)] = static_cast<std::uint8_t>(random());
    const auto answer = decodeBytes(damaged);
    const auto* read = std::get_if<Pixels>(&answer);
    if (read == nullptr) continue;
    EXPECT_GE(read->bytes.view.size(), read->layout.bytesPerRow * read->layout.height);
  }
}

INSTANTIATE_TEST_SUITE_P(Packings, TiffDamage,
                         testing::Values(Words{"-c", "none", "-r", "5"}, Words{"-c", "lzw:2"},
                                         Words{"-c", "zip:2"}, Words{"-c", "packbits"}, Words{"-c", "lzma"},
                                         Words{"-c", "zstd"}, Words{"-c", "lerc"}, Words{"-c", "webp"},
                                         Words{"-c", "jpeg:r"}, Words{"-c", "g4"}, Words{"-c", "g3"},
                                         Words{"-c", "zip", "-t", "-w", "16", "-l", "16"},
                                         Words{"-c", "lzw", "-p", "separate"}, Words{"-c", "none", "-8"}));

// Its streams end with a sum over what they hold.
TEST(TiffDamaged, OneInDeflateWithAnyWrongByteIsRefused) {
  const Pixels pixels =
      pixelsOf(softSamples(60, 40, 3, 8), 60, 40, CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none);
  const Bytes file = encoded("public.tiff", pixels);
  const std::size_t end = file.size() - 200;  // of the directory and its values
  for (std::size_t at = 16; at < end; at += 3) {
    Bytes damaged = file;
    damaged[at] ^= 0x20;
    EXPECT_TRUE(faultOf(decodeBytes(damaged))) << at;
  }
}

class TiffClaims : public testing::Test {
 protected:
  std::optional<Fault> faultOfOne(const TiffBuilder::Directory& directory, const Limits& limits = {}) const {
    return faultOf(decodeBytes(builder.build({directory}), limits));
  }
  TiffBuilder builder;
  TiffBuilder::Directory gray = builder.picture(4, 3, 8, 1, kBlackIsZero, Bytes(12, 7));
};

TEST_F(TiffClaims, OfMorePixelsThanAnybodyNeedsAreALimit) {
  const auto big = with(with(gray, builder.longs(256, {1'000'000})), builder.longs(257, {1'000'000}));
  EXPECT_EQ(faultOfOne(big), (Fault{FaultKind::limit, LimitName::pixels}));
  const auto wide = with(with(gray, builder.longs(256, {0xFFFFFFFF})), builder.longs(257, {1}));
  EXPECT_TRUE(faultOfOne(wide));
  const auto deep = builder.picture(20'000, 20'000, 64, 3, kRgb, Bytes(12, 7));
  EXPECT_TRUE(faultOfOne(deep));
  Limits few;
  few.decodedBytes = 11;
  EXPECT_EQ(faultOfOne(gray), std::nullopt);
  EXPECT_EQ(faultOf(decodeBytes(builder.build({gray}), few)),
            (Fault{FaultKind::limit, LimitName::decodedBytes}));
}

TEST_F(TiffClaims, OfATileThatIsMuchLargerThanThePictureAreALimit) {
  const auto tiles = [&](std::uint32_t side) {
    auto directory = gray;
    directory.pixels.clear();
    std::erase_if(directory.entries, [](const TiffBuilder::Entry& entry) { return entry.tag == 278; });
    for (const auto& entry : {builder.longs(322, {side}), builder.longs(323, {side}), builder.longs(324, {8}),
                              builder.longs(325, {100})})
      directory = with(directory, entry);
    return faultOfOne(with(directory, builder.shorts(259, {5})));
  };
  EXPECT_EQ(tiles(32768), (Fault{FaultKind::limit, LimitName::compressionRatio}));
  EXPECT_EQ(tiles(64), (Fault{FaultKind::damaged}));
}

TEST_F(TiffClaims, ThatContradictEachOtherAreRefused) {
  const auto refused = [&](std::initializer_list<TiffBuilder::Entry> entries,
                           const TiffBuilder::Directory& of) {
    auto directory = of;
    for (const auto& entry : entries) directory = with(directory, entry);
    return faultOfOne(directory).has_value();
  };
  EXPECT_FALSE(refused({}, gray));
  EXPECT_TRUE(refused({builder.longs(256, {0})}, gray));
  EXPECT_TRUE(refused({builder.longs(257, {0})}, gray));
  EXPECT_TRUE(refused({builder.shorts(258, {0})}, gray));
  EXPECT_TRUE(refused({builder.shorts(258, {65})}, gray));
  EXPECT_TRUE(refused({builder.shorts(277, {0})}, gray));
  EXPECT_TRUE(refused({builder.shorts(339, {3})}, gray)) << "floating point of 8 bits";
  EXPECT_TRUE(refused({builder.shorts(339, {6})}, gray)) << "complex numbers";
  EXPECT_TRUE(refused({builder.shorts(259, {12345})}, gray));
  EXPECT_TRUE(refused({builder.shorts(262, {kRgb})}, gray)) << "one sample";
  EXPECT_TRUE(refused({builder.shorts(258, {4}), builder.shorts(262, {kPalette})}, gray)) << "no palette";
  EXPECT_TRUE(refused({builder.shorts(262, {kYcc})}, gray)) << "one sample";
  EXPECT_TRUE(refused({builder.shorts(262, {777})}, gray));
  EXPECT_TRUE(refused({builder.shorts(322, {16}), builder.shorts(323, {16})}, gray)) << "tiles in strips";
  const auto rgb = builder.picture(2, 1, 8, 3, kRgb, Bytes(6, 7));
  EXPECT_FALSE(refused({}, rgb));
  EXPECT_TRUE(refused({builder.shorts(258, {8, 4, 8})}, rgb));
  EXPECT_TRUE(refused({builder.shorts(258, {8, 8, 8}), builder.shorts(284, {2})}, rgb))
      << "one plane of three";
}

TEST_F(TiffClaims, OfStripsThatAreNotThereAreRefused) {
  auto none = gray;
  none.pixels.clear();
  EXPECT_TRUE(faultOfOne(none));
  auto less = gray;
  less.pixels.pop_back();
  EXPECT_TRUE(faultOfOne(less));
  // Two strips by their rows, one by their places.
  EXPECT_TRUE(faultOfOne(with(gray, builder.longs(278, {2}))));
  auto nowhere = none;
  nowhere = with(with(nowhere, builder.longs(273, {0x7FFFFFFF})), builder.longs(279, {12}));
  EXPECT_TRUE(faultOfOne(nowhere));
  auto empty = with(with(none, builder.longs(273, {0})), builder.longs(279, {0}));
  EXPECT_TRUE(faultOfOne(empty));
}

// The library leaves the rest of the strip as it finds it.
TEST_F(TiffClaims, OfALargerPictureThanAJpegHoldsAreRefused) {
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes jpeg = madeByImageMagick({"-size", "32x16", "xc:red", "-sampling-factor", "4:4:4"}, "jpg");
  const auto picture = [&](std::uint32_t width, std::uint32_t height) {
    return with(with(builder.picture(width, height, 8, 3, kYcc, jpeg), builder.shorts(259, {7})),
                builder.shorts(530, {1, 1}));
  };
  EXPECT_EQ(faultOfOne(picture(32, 16)), std::nullopt);
  EXPECT_TRUE(faultOfOne(picture(32, 32)));
  EXPECT_TRUE(faultOfOne(picture(48, 16)));
}

TEST_F(TiffClaims, OfTooMuchMetadataAreALimit) {
  Limits few;
  few.metadataBytes = 1000;
  few.profileBytes = 1000;
  for (const std::uint16_t tag :
       {std::uint16_t{700}, std::uint16_t{34377}, std::uint16_t{33723}, std::uint16_t{270}})
    EXPECT_EQ(faultOfOne(with(gray, builder.bytes(tag, 1, Bytes(1001))), few),
              (Fault{FaultKind::limit, LimitName::metadataBytes}))
        << tag;
  EXPECT_EQ(faultOfOne(with(gray, builder.bytes(34675, 7, Bytes(1001))), few),
            (Fault{FaultKind::limit, LimitName::profileBytes}));
  // Many entries that share one value.
  Bytes file = builder.build({with(gray, builder.bytes(270, 2, Bytes(900)))});
  EXPECT_EQ(faultOf(decodeBytes(file, few)), std::nullopt);
  EXPECT_TRUE(faultOfOne(
      with(with(gray, builder.bytes(270, 2, Bytes(900))), builder.bytes(315, 2, Bytes(900))), few));
}

TEST_F(TiffClaims, OfBrokenMetadataLeaveItOut) {
  auto broken = with(gray, {270, 2, 0xFFFFFF, {1, 2, 3, 4}});  // leaves the file
  broken = with(broken, {34665, 4, 1, {255, 255, 255, 127}});  // nowhere
  broken = with(broken, {34853, 4, 1, {8, 0, 0, 0}});          // the picture itself
  broken = with(broken, {700, 1, 0xFFFFFFF, {0, 1, 0, 0}});
  broken = with(broken, {315, 99, 1, {0, 1, 0, 0}});              // of no type
  broken = with(broken, builder.bytes(34675, 7, Bytes(300, 5)));  // no profile
  EXPECT_EQ(faultOfOne(broken), std::nullopt);
  const Bytes file = builder.build({broken});
  EXPECT_TRUE(std::holds_alternative<Untagged>(decoded(file).profile));
  const Properties properties = propertiesOf(file);
  EXPECT_NO_THROW(encoded("public.tiff", decoded(file), &properties));
}

TEST(TiffDamaged, NeitherHeadersNorDirectoriesOfNonsenseAreTaken) {
  using namespace std::string_view_literals;
  for (const std::string_view head :
       {"II*"sv, "II*\0\0\0\0\0"sv, "MM\0*\0\0\0\x08"sv, "II+\0\x08\0\0\0\0\0\0\0\0\0\0\0"sv}) {
    Bytes file(head.begin(), head.end());
    EXPECT_TRUE(faultOf(decodeBytes(file)));
    file.resize(200, 0xFF);
    EXPECT_TRUE(faultOf(decodeBytes(file)));
  }
}

}  // namespace
}  // namespace ostra::test
