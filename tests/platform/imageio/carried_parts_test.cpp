#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using namespace std::string_view_literals;

Bytes text(std::string_view type, std::string_view content) { return pngChunk(type, bytesOfText(content)); }

Bytes rewritten(const Bytes& file, std::string_view type) {
  Properties properties = propertiesOf(file);
  properties.remove(kCGImagePropertyPNGDictionary);
  return encoded(type, decoded(file), &properties);
}

std::string shown(const Bytes& file, const std::string& extension, std::vector<std::string> words) {
  const TemporaryFolder folder;
  writeFile(folder.path("a." + extension), ByteView(file));
  words.insert(words.begin(), "exiftool");
  words.push_back(folder.path("a." + extension));
  return run(words);
}

bool has(const Bytes& file, std::string_view pattern) { return positionOf(pattern, file) < file.size(); }

class CarriedParts : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
    png_ = madeByImageMagick(
        {"-size", "47x33", "plasma:", "-depth", "8", "-strip", "-define", "png:exclude-chunks=all"}, "png");
    jpeg_ = madeByImageMagick({"-size", "47x33", "plasma:", "-strip"}, "jpg");
  }
  Bytes withEnd(const Bytes& chunk) const {
    return joined({Bytes(png_.begin(), png_.end() - 12), chunk, Bytes(png_.end() - 12, png_.end())});
  }
  Bytes png_, jpeg_;
};

TEST_F(CarriedParts, TextsKeepTheirLanguageAndTheirTranslatedKeyword) {
  const Bytes file =
      withPngChunk(png_, joined({text("iTXt", "Title\0\0\0de\0Titel\0Der Turm"sv), text("tEXt",
                                                                                        "Stra\xDF"
                                                                                        "e\0hier"sv)}));
  const Bytes now = rewritten(file, "public.png");
  const auto carrier = propertiesOf(now).carrier;
  ASSERT_EQ(carrier->texts.size(), 2u);
  EXPECT_EQ(carrier->texts, propertiesOf(file).carrier->texts);
  EXPECT_EQ(carrier->texts[0], (CarriedText{"Title", "Der Turm", "de", "Titel"}));
  EXPECT_EQ(carrier->texts[1].keyword, "Stra\u00dfe");
  EXPECT_THAT(shown(now, "png", {"-PNG:Title-de"}), testing::HasSubstr("Der Turm"));
}

TEST_F(CarriedParts, PlaceScaleAndStereoModeStayWhereTheyAreWhatTheyShouldBe) {
  const auto sound = [](const Bytes& stereo, std::string_view scale, std::size_t offset) {
    return joined({pngChunk("sTER", stereo), text("sCAL", scale), pngChunk("oFFs", Bytes(offset))});
  };
  const Bytes kept = rewritten(withPngChunk(png_, sound({1},
                                                        "\1"
                                                        "2.5\0"
                                                        "3"sv,
                                                        9)),
                               "public.png");
  for (const char* type : {"sTER", "sCAL", "oFFs"}) EXPECT_TRUE(has(kept, type)) << type;
  for (const std::string_view scale : {""sv,
                                       "\3"
                                       "2.5\0"
                                       "3"sv,
                                       "\1"
                                       "2.5"sv,
                                       "\1\0"
                                       "3"sv,
                                       "\1"
                                       "2.5\0"sv}) {
    const Bytes now = rewritten(withPngChunk(png_, sound({2}, scale, 8)), "public.png");
    for (const char* type : {"sTER", "sCAL", "oFFs"}) EXPECT_FALSE(has(now, type)) << type;
  }
}

TEST_F(CarriedParts, ChunksStayBeforeAndBehindThePixels) {
  Bytes file =
      withPngChunk(png_, joined({pngChunk("oFFs", Bytes(9)), pngChunk("abCd", bytesOfText("safe")),
                                 pngChunk("abCD", bytesOfText("unsafe")), pngChunk("mDCv", Bytes(24))}));
  file = joined({Bytes(file.begin(), file.end() - 12), pngChunk("xyZz", bytesOfText("behind")),
                 Bytes(file.end() - 12, file.end())});
  const Bytes now = rewritten(file, "public.png");
  EXPECT_LT(positionOf("abCdsafe", now), positionOf("IDAT", now));
  EXPECT_LT(positionOf("oFFs", now), positionOf("IDAT", now));
  EXPECT_TRUE(has(now, "xyZzbehind"));
  EXPECT_GT(positionOf("xyZzbehind", now), positionOf("IDAT", now));
  EXPECT_FALSE(has(now, "abCD"));
  EXPECT_FALSE(has(now, "mDCv"));
  EXPECT_FALSE(has(rewritten(file, "public.jpeg"), "abCd"));
  OSTRA_NEEDS_PROGRAM("pngcheck");
  const TemporaryFolder folder;
  writeFile(folder.path("a.png"), ByteView(now));
  EXPECT_EQ(runProgram({"pngcheck", "-q", folder.path("a.png")}).status, 0);
}

TEST_F(CarriedParts, AChunkWithAWrongChecksumIsNotOne) {
  Bytes chunk = pngChunk("abCd", bytesOfText("safe"));
  chunk.back() ^= 1;
  EXPECT_EQ(propertiesOf(withPngChunk(png_, chunk)).carrier, nullptr);
}

TEST_F(CarriedParts, AnAspectRatioWithoutADensityStays) {
  const Bytes file = withPngChunk(png_, pngChunk("pHYs", Bytes{0, 0, 0, 2, 0, 0, 0, 3, 0}));
  EXPECT_THAT(
      shown(rewritten(file, "public.png"), "png", {"-s3", "-n", "-PixelsPerUnitX", "-PixelsPerUnitY"}),
      testing::StrEq("2\n3\n"));
  EXPECT_THAT(shown(rewritten(file, "public.jpeg"), "jpg",
                    {"-s3", "-n", "-XResolution", "-YResolution", "-ResolutionUnit"}),
              testing::StrEq("2\n3\n0\n"));
}

TEST_F(CarriedParts, ADensityACentimetreStaysOne) {
  Bytes file = jpeg_;
  const std::size_t jfif = positionOf("JFIF", file);
  file.at(jfif + 7) = 2;
  file.at(jfif + 9) = file.at(jfif + 11) = 117;
  file.at(jfif + 8) = file.at(jfif + 10) = 0;
  EXPECT_THAT(shown(rewritten(file, "public.jpeg"), "jpg",
                    {"-s3", "-n", "-XResolution", "-YResolution", "-ResolutionUnit"}),
              testing::StrEq("117\n117\n2\n"));
}

TEST_F(CarriedParts, CommentsKeepEveryByte) {
  const std::vector<std::string> comments = {"caf\xE9", std::string("nul\0inside\0", 11), "",
                                             "\x83\x65\x83\x58"};
  Bytes file = jpeg_;
  for (auto comment = comments.rbegin(); comment != comments.rend(); ++comment)
    file = withJpegSegment(file, jpegSegment(0xFE, "", bytesOfText(*comment)));
  EXPECT_EQ(propertiesOf(rewritten(file, "public.jpeg")).carrier->comments, comments);
  EXPECT_THAT(shown(rewritten(file, "public.png"), "png", {"-a", "-s3", "-PNG:Comment"}),
              testing::HasSubstr("caf\u00e9"));
}

TEST_F(CarriedParts, TextsOfAPngBecomeComments) {
  const Bytes file =
      withPngChunk(png_, joined({text("tEXt", "Comment\0one"sv), text("tEXt", "Comment\0two"sv),
                                 text("tEXt", "Disclaimer\0none"sv)}));
  const Bytes now = rewritten(file, "public.jpeg");
  EXPECT_EQ(propertiesOf(now).carrier->comments, (std::vector<std::string>{"two", "Disclaimer: none"}));
  EXPECT_EQ(shown(now, "jpg", {"-s3", "-UserComment"}), "one\n");
}

TEST_F(CarriedParts, ARemovedGroupTakesTheTextsThatAreAtHomeInIt) {
  const Bytes file =
      withPngChunk(png_, joined({text("tEXt", "Title\0Tower"sv), text("tEXt", "Author\0Jo"sv)}));
  Properties properties = propertiesOf(file);
  EXPECT_TRUE(properties.remove("{PNG}"));
  EXPECT_TRUE(properties.remove("{IPTC}"));
  const Bytes now = encoded("public.png", decoded(png_), &properties);
  EXPECT_FALSE(has(now, "Tower"));
  EXPECT_EQ(shown(now, "png", {"-s3", "-Artist"}), "Jo\n");
}

TEST_F(CarriedParts, TextsInAKeptGroupAreWritten) {
  Properties properties;
  properties.tree.emplace(kCGImagePropertyPNGDictionary,
                          Dictionary{{"Title", "Tower"}, {"Creation Time", "then"}, {"Gamma", 0.5}});
  const Bytes now = encoded("public.png", decoded(png_), &properties);
  EXPECT_EQ(shown(now, "png", {"-s3", "-PNG:Title", "-PNG:CreationTime"}), "Tower\nthen\n");
}

TEST_F(CarriedParts, ExifThatIsCutInTwoSegmentsIsOneBlock) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), ByteView(jpeg_));
  run({"exiftool", "-q", "-overwrite_original", "-Make=Nobody", "-Orientation#=6",
       "-UserComment=" + std::string(40'000, 'x'), folder.path("a.jpg")});
  const Bytes whole = propertiesOf(readFile(folder.path("a.jpg"))).carrier->exif;
  const auto half = whole.begin() + 30'000;
  const auto segment = [](const Bytes& block) { return jpegSegment(0xE1, "Exif\0\0"sv, block); };
  const Bytes stale = bytesOfText("II*\0\x08\0\0\0\0\0\0\0\0\0"sv);
  const Bytes cut =
      withJpegSegment(jpeg_, joined({segment(Bytes(whole.begin(), half)), segment(Bytes(half, whole.end())),
                                     segment(stale), segment(Bytes(100, 7))}));
  EXPECT_EQ(propertiesOf(cut).carrier->exif, whole);
}

TEST_F(CarriedParts, EveryRawProfileThatIsNoBlockStaysAText) {
  const Bytes file = withPngChunk(png_, joined({text("tEXt", "Raw profile type other\0\nother\n2\nabcd\n"sv),
                                                text("tEXt", "Raw profile type exif\0no digits"sv),
                                                text("tEXt", "Raw profile type icc\0\nicc\n2\nabcd\n"sv)}));
  const auto texts = propertiesOf(rewritten(file, "public.png")).carrier->texts;
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0].keyword, "Raw profile type other");
  EXPECT_EQ(texts[1].text, "no digits");
}

TEST_F(CarriedParts, TheKeysOfThePngGroupAreThoseOfTheirChunks) {
  const Bytes chromaticities = {0, 0, 0x7A, 0x26, 0, 0, 0x80, 0x84, 0, 0, 0xFA, 0,    0, 0, 0x80, 0xE8,
                                0, 0, 0x75, 0x30, 0, 0, 0xEA, 0x60, 0, 0, 0x3A, 0x98, 0, 0, 0x17, 0x70};
  const Bytes control =
      joined({Bytes(4), Bytes{0, 0, 0, 47}, Bytes{0, 0, 0, 33}, Bytes(8), Bytes{0, 1, 0, 100}, Bytes(2)});
  const Bytes file = withPngChunk(
      png_,
      joined({pngChunk("gAMA", Bytes{0, 0, 0xB1, 0x8F}), pngChunk("cHRM", chromaticities),
              pngChunk("sRGB", Bytes{0}), pngChunk("pHYs", Bytes{0, 0, 0x16, 0x25, 0, 0, 0x16, 0x25, 1}),
              pngChunk("tIME", Bytes{7, 0xE8, 2, 3, 4, 5, 6}),
              pngChunk("acTL", Bytes{0, 0, 0, 1, 0, 0, 0, 3}), pngChunk("fcTL", control),
              text("tEXt", "Warning\0careful"sv)}));
  const Dictionary group = *propertiesOf(file).tree.at("{PNG}").get<Dictionary>();
  const Dictionary frame{{"DelayTime", 0.1}, {"UnclampedDelayTime", 0.01}};
  const Dictionary expected{{"Gamma", 0.45455},
                            {"InterlaceType", 0},
                            {"XPixelsPerMeter", 5669},
                            {"YPixelsPerMeter", 5669},
                            {"sRGBIntent", 0},
                            {"Warning", "careful"},
                            {"ModificationTime", "2024:02:03 04:05:06"},
                            {"Chromaticities", Array{0.3127, 0.329, 0.64, 0.33, 0.3, 0.6, 0.15, 0.06}},
                            {"LoopCount", 3},
                            {"DelayTime", 0.1},
                            {"UnclampedDelayTime", 0.01},
                            {"CanvasPixelWidth", 47},
                            {"CanvasPixelHeight", 33},
                            {"FrameInfo", Array{frame}}};
  for (const auto& [key, value] : expected) {
    ASSERT_TRUE(group.contains(key)) << key;
    EXPECT_TRUE(group.at(key) == value) << key;
  }
  EXPECT_EQ(group.size(), expected.size());
  EXPECT_THAT(
      shown(file, "png", {"-s3", "-n", "-Gamma", "-PixelsPerUnitX", "-PNG:ModifyDate", "-AnimationPlays"}),
      testing::StrEq("2.2\n5669\n2024:02:03 04:05:06\n3\n"));
  EXPECT_TRUE(propertiesOf(file).tree.at("DPIWidth") == Value(144.0));
}

}  // namespace
}  // namespace ostra::test
