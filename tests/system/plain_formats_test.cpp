#include <algorithm>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

struct Kind {
  const char* name;
  const char* file;
  std::vector<std::string> settings;
  /// What ImageMagick calls the format, before and after.
  const char* format;
  const char* channels = "RGB";
  bool isDeep = false;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

// As it is seen: ImageMagick leaves a TGA as it is stored unless it is asked to turn it.
std::string upright(const TemporaryFolder& folder, const std::string& path) {
  convert({path, "-auto-orient", "MIFF:" + folder.path("upright")});
  return folder.path("upright");
}

double meanDifference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  EXPECT_EQ(a.size(), b.size());
  double sum = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) sum += std::abs(int{a[i]} - int{b[i]});
  return sum / static_cast<double>(a.size());
}

const std::vector<std::string> kAlpha = {"-alpha",    "set", "-channel", "A",
                                         "-evaluate", "set", "100%",     "+channel"};

const Kind kKinds[] = {
    {"BmpRgb", "a.bmp", {"-type", "TrueColor"}, "BMP"},
    {"BmpGray", "a.bmp", {"-colorspace", "gray"}, "BMP", "GRAY"},
    {"BmpRgba", "a.bmp", kAlpha, "BMP", "RGBA"},
    {"BmpPalette", "a.bmp", {"-colors", "9", "-type", "palette"}, "BMP"},
    {"BmpRunLengths", "a.bmp", {"-colors", "9", "-type", "palette", "-compress", "RLE"}, "BMP"},
    {"Ppm", "a.ppm", {}, "PPM"},
    {"PpmInText", "a.ppm", {"-compress", "none"}, "PPM"},
    {"DeepPpm", "a.ppm", {"-depth", "16"}, "PPM", "RGB", true},
    {"Pgm", "a.pgm", {}, "PGM", "GRAY"},
    {"DeepPgm", "a.pgm", {"-depth", "16"}, "PGM", "GRAY", true},
    {"Pbm", "a.pbm", {"-monochrome"}, "PBM", "GRAY"},
    {"Pam", "a.pam", kAlpha, "PAM", "RGBA"},
    {"TgaRgb", "a.tga", {"-type", "TrueColor"}, "TGA"},
    {"TgaGray", "a.tga", {"-colorspace", "gray"}, "TGA", "GRAY"},
    {"TgaRgba", "a.tga", kAlpha, "TGA", "RGBA"},
    {"TgaRunLengths", "a.tga", {"-compress", "RLE"}, "TGA"},
    {"Ico", "a.ico", kAlpha, "ICO", "RGBA"},
};

class PlainFormats : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    path_ = folder.path(GetParam().file);
    makePicture(path_, GetParam().settings);
  }
  void convertWith(const std::string& action) const {
    const ProgramResult result = program.run({action, path_});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
  }
  std::vector<std::uint16_t> samples() const { return samples16(upright(own, path_), GetParam().channels); }

  InstalledProgram program;
  TemporaryFolder folder, own;
  std::string path_;
};

TEST_P(PlainFormats, AreInvertedInPlace) {
  const auto before = samples();
  convertWith("invert");
  EXPECT_EQ(folder.names(), std::vector<std::string>{GetParam().file});
  const auto after = samples();
  ASSERT_EQ(after.size(), before.size());
  const bool hasAlpha = std::string_view(GetParam().channels) == "RGBA";
  for (std::size_t i = 0; i < before.size(); ++i) {
    const bool alpha = hasAlpha && i % 4 == 3;
    ASSERT_EQ(after[i], alpha ? before[i] : 65535 - before[i]) << "sample " << i;
  }
}

TEST_P(PlainFormats, AreKeptBySrgbInPlace) {
  const auto before = samples();
  convertWith("srgb");
  EXPECT_EQ(folder.names(), std::vector<std::string>{GetParam().file});
  const auto after = samples();
  ASSERT_EQ(after.size(), before.size());
  // Gray becomes RGB, which ImageMagick weighs when it is asked for gray: 16 bits show that.
  const int most = GetParam().isDeep ? 2 : 0;
  for (std::size_t i = 0; i < before.size(); ++i)
    ASSERT_LE(std::abs(int{after[i]} - int{before[i]}), most) << "sample " << i;
  EXPECT_EQ(identify(path_, "%z") == "16", GetParam().isDeep);
}

TEST_P(PlainFormats, GetAJpegBesideThem) {
  const auto before = samples8(upright(own, path_), "RGB");
  const Bytes source = readFile(path_);
  convertWith("jpg");
  EXPECT_THAT(folder.names(), testing::UnorderedElementsAre(GetParam().file, "a.jpg"));
  EXPECT_EQ(readFile(path_), source);
  EXPECT_LT(meanDifference(samples8(folder.path("a.jpg"), "RGB"), before), 6);
}

TEST_P(PlainFormats, BecomeGrayInPlace) {
  convertWith("grayscale");
  EXPECT_EQ(folder.names(), std::vector<std::string>{GetParam().file});
  const auto after = samples8(path_, "RGB");
  for (std::size_t i = 0; i < after.size(); i += 3) {
    ASSERT_EQ(after[i], after[i + 1]);
    ASSERT_EQ(after[i], after[i + 2]);
  }
  EXPECT_NE(identify(path_, "%m"), "JPEG");
}

INSTANTIATE_TEST_SUITE_P(EveryKind, PlainFormats, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& kind) {
                           return std::string(kind.param.name);
                         });

class PlainFormatsAlone : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
  // Runs an action that must fail with these words and leave the folder as it is.
  void expectRefused(const std::vector<std::string>& words, const std::string& name,
                     const std::string& reason) const {
    const Bytes before = readFile(folder.path(name));
    std::vector<std::string> line = words;
    line.push_back(folder.path(name));
    const ProgramResult result = program.run(line);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(name + ": " + reason), std::string::npos) << result.errors;
    EXPECT_EQ(readFile(folder.path(name)), before);
    EXPECT_EQ(folder.names(), std::vector<std::string>{name});
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(PlainFormatsAlone, AnIconOfSeveralSizesIsRefused) {
  convert({"-size", "32x32", "xc:red", "(", "-clone", "0", "-resize", "16x16", ")", folder.path("a.ico")});
  expectRefused({"invert"}, "a.ico", "animated or multi-frame images are not rewritten in place.");
}

TEST_F(PlainFormatsAlone, SeveralPortablePicturesInAFileAreRefused) {
  makePicture(folder.path("a.ppm"));
  const Bytes one = readFile(folder.path("a.ppm"));
  Bytes two = one;
  two.insert(two.end(), one.begin(), one.end());
  writeFile(folder.path("a.ppm"), two);
  expectRefused({"invert"}, "a.ppm", "animated or multi-frame images are not rewritten in place.");
}

TEST_F(PlainFormatsAlone, ColoursThatTheFormatCannotSayAreRefused) {
  makePicture(folder.path("a.tga"));
  expectRefused({"--profile", "Adobe RGB (1998)", "convert-color-profile"}, "a.tga",
                "the com.truevision.tga-image writer failed.");
}

TEST_F(PlainFormatsAlone, ATextThatIsNoneIsRefused) {
  writeFile(folder.path("a.tga"), std::string("P5 is what this text is about, and BM too.\n"));
  expectRefused({"invert"}, "a.tga", "not an image");
}

TEST_F(PlainFormatsAlone, ABitmapHoldsTheProfileThatWasChosen) {
  makePicture(folder.path("a.bmp"), {"-type", "TrueColor", "-density", "300", "-units", "PixelsPerInch"});
  const auto before = samples8(folder.path("a.bmp"), "RGB");
  const ProgramResult result =
      program.run({"--profile", "Adobe RGB (1998)", "convert-color-profile", folder.path("a.bmp")});
  EXPECT_EQ(result.status, 0) << result.errors;
  const Bytes file = readFile(folder.path("a.bmp"));
  const std::string text(file.begin(), file.end());
  EXPECT_EQ(text.substr(14 + 56, 4), "DEBM");
  EXPECT_EQ(file[38] | file[39] << 8, 11811) << "dots a metre";
  EXPECT_GT(meanDifference(samples8(folder.path("a.bmp"), "RGB"), before), 5) << "not converted";
  EXPECT_EQ(program.run({"srgb", folder.path("a.bmp")}).status, 0);
  EXPECT_LT(meanDifference(samples8(folder.path("a.bmp"), "RGB"), before), 1) << "the profile was not heeded";
}

TEST_F(PlainFormatsAlone, ACursorGetsAPngBesideIt) {
  convert({"-size", "32x32", "xc:red", "ICO:" + folder.path("a.cur")});
  Bytes cursor = readFile(folder.path("a.cur"));
  cursor[2] = 2;
  writeFile(folder.path("a.cur"), cursor);
  const ProgramResult result = program.run({"invert", folder.path("a.cur")});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.cur", "a.png"}));
  EXPECT_EQ(samples8(folder.path("a.png"), "RGB")[0], 0);
}

}  // namespace
}  // namespace ostra::test
