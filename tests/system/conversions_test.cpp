#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

double meanDifference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  EXPECT_EQ(a.size(), b.size());
  double sum = 0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) sum += std::abs(int{a[i]} - int{b[i]});
  return sum / static_cast<double>(a.size());
}

class Conversions : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }

  // Runs an action that must succeed and say nothing.
  void convertWith(const std::string& action, const std::string& path) const {
    const ProgramResult result = program.run({action, path});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "");
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(Conversions, GrayscaleRewritesAPngInPlaceAsGray) {
  makePicture(folder.path("a.png"));
  convertWith("grayscale", folder.path("a.png"));
  EXPECT_EQ(identify(folder.path("a.png"), "%m %wx%h %[channels]"), "PNG 97x61 gray");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.png"});
}

TEST_F(Conversions, GrayscaleRewritesAJpegInPlaceAsGray) {
  makePicture(folder.path("a.jpg"));
  convertWith("grayscale", folder.path("a.jpg"));
  EXPECT_EQ(identify(folder.path("a.jpg"), "%m %wx%h %[channels]"), "JPEG 97x61 gray");
}

TEST_F(Conversions, GrayscaleKeepsTransparency) {
  makeTransparentPicture(folder.path("a.png"));
  const auto before = samples8(folder.path("a.png"), "RGBA");
  convertWith("grayscale", folder.path("a.png"));
  const auto after = samples8(folder.path("a.png"), "RGBA");
  ASSERT_EQ(before.size(), after.size());
  for (std::size_t i = 3; i < after.size(); i += 4) ASSERT_EQ(before[i], after[i]) << "pixel " << i / 4;
}

TEST_F(Conversions, JpegActionsMakeASiblingBesideAPng) {
  for (const char* action : {"jpg", "srgb-jpg", "grayscale-jpg"}) {
    const TemporaryFolder own;
    makeTransparentPicture(own.path("photo.old.png"));
    const Bytes before = readFile(own.path("photo.old.png"));
    convertWith(action, own.path("photo.old.png"));
    EXPECT_EQ(own.names(), (std::vector<std::string>{"photo.old.jpg", "photo.old.png"}));
    EXPECT_EQ(readFile(own.path("photo.old.png")), before);
    EXPECT_EQ(identify(own.path("photo.old.jpg"), "%m %wx%h"), "JPEG 97x61");
  }
}

TEST_F(Conversions, TransparencyBecomesWhiteInAJpeg) {
  convert({"-size", "64x48", "xc:none", "PNG32:" + folder.path("a.png")});
  convertWith("jpg", folder.path("a.png"));
  for (const std::uint8_t sample : samples8(folder.path("a.jpg"), "RGB")) ASSERT_GE(sample, 254);
}

TEST_F(Conversions, AnExistingSiblingIsOverwrittenAndKeepsItsMode) {
  makePicture(folder.path("a.png"));
  writeFile(folder.path("a.jpg"), "an older picture");
  ASSERT_EQ(chmod(folder.path("a.jpg").c_str(), 0640), 0);
  convertWith("jpg", folder.path("a.png"));
  EXPECT_EQ(identify(folder.path("a.jpg"), "%m"), "JPEG");
  struct stat status {};
  ASSERT_EQ(stat(folder.path("a.jpg").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(Conversions, JpegActionsRewriteAJpegUnderItsOwnName) {
  makePicture(folder.path("photo.JPG"));
  convertWith("srgb-jpg", folder.path("photo.JPG"));
  EXPECT_EQ(folder.names(), std::vector<std::string>{"photo.JPG"});
}

TEST_F(Conversions, APngNamedJpgBecomesAJpegUnderThatName) {
  makePicture("PNG:" + folder.path("x.jpg"));
  convertWith("jpg", folder.path("x.jpg"));
  EXPECT_EQ(folder.names(), std::vector<std::string>{"x.jpg"});
  EXPECT_EQ(identify(folder.path("x.jpg"), "%m %wx%h"), "JPEG 97x61");
}

TEST_F(Conversions, InvertTwiceGivesTheFirstOpaquePictureBack) {
  for (const char* depth : {"8", "16"}) {
    const std::string path = folder.path(std::string(depth) + ".png");
    makePicture(path, {"-depth", depth});
    const auto before = samples16(path, "RGB");
    convertWith("invert", path);
    const auto inverted = samples16(path, "RGB");
    ASSERT_EQ(before.size(), inverted.size());
    for (std::size_t i = 0; i < before.size(); ++i)
      ASSERT_EQ(before[i], 65535 - inverted[i]) << "sample " << i;
    convertWith("invert", path);
    EXPECT_EQ(samples16(path, "RGB"), before);
  }
}

TEST_F(Conversions, InvertOfATransparentPictureKeepsItsOpacity) {
  makeTransparentPicture(folder.path("a.png"));
  const auto before = samples8(folder.path("a.png"), "RGBA");
  convertWith("invert", folder.path("a.png"));
  const auto after = samples8(folder.path("a.png"), "RGBA");
  for (std::size_t i = 0; i < before.size(); i += 4) {
    ASSERT_EQ(before[i + 3], after[i + 3]);
    // At opacity a, 8-bit premultiplied storage holds a colour to within 255 / a / 2 of its value, twice
    // rounded.
    const double tolerance = before[i + 3] == 0 ? 255 : 255.0 / before[i + 3] + 1;
    for (int c = 0; c < 3; ++c)
      ASSERT_NEAR(255 - before[i + c], after[i + c], tolerance) << "pixel " << i / 4;
  }
}

TEST_F(Conversions, SixteenBitsStaySixteenBits) {
  makePicture(folder.path("a.png"), {"-depth", "16"});
  convertWith("srgb", folder.path("a.png"));
  EXPECT_EQ(identify(folder.path("a.png"), "%[bit-depth]"), "16");
  convertWith("grayscale", folder.path("a.png"));
  EXPECT_EQ(identify(folder.path("a.png"), "%[bit-depth] %[channels]"), "16 gray");
}

TEST_F(Conversions, ACmykJpegKeepsItsFourInksUnderJpg) {
  makePicture(folder.path("a.jpg"), {"-colorspace", "CMYK", "-quality", "97"});
  const auto before = samples8(folder.path("a.jpg"), "CMYK");
  convert({folder.path("a.jpg"), "-quality", "90", "-sampling-factor", "1x1", folder.path("peer.jpg")});
  const auto peer = samples8(folder.path("peer.jpg"), "CMYK");
  convertWith("jpg", folder.path("a.jpg"));
  EXPECT_EQ(identify(folder.path("a.jpg"), "%[colorspace]"), "CMYK");
  const auto after = samples8(folder.path("a.jpg"), "CMYK");
  // The picture is noisy, so how far a writer may stray is measured with another one at quality 90.
  EXPECT_LE(meanDifference(before, after), meanDifference(before, peer));
}

TEST_F(Conversions, ConvertingToSrgbOrGrayTwiceChangesNoPixelOfAPng) {
  for (const char* action : {"srgb", "grayscale"}) {
    const std::string path = folder.path(std::string(action) + ".png");
    makePicture(path);
    convertWith(action, path);
    const auto once = samples16(path, "RGB");
    convertWith(action, path);
    EXPECT_EQ(samples16(path, "RGB"), once);
  }
}

TEST_F(Conversions, EveryWrittenFileIsAcceptedByStrictReaders) {
  OSTRA_NEEDS_PROGRAM("pngcheck");
  OSTRA_NEEDS_PROGRAM("djpeg");
  for (const char* action : {"grayscale", "srgb", "invert", "grayscale-jpg", "srgb-jpg", "jpg"}) {
    const TemporaryFolder own;
    makePicture(own.path("rgb.png"));
    makeTransparentPicture(own.path("rgba.png"));
    makePicture(own.path("deep.png"), {"-depth", "16"});
    makePicture(own.path("gray.png"), {"-colorspace", "gray"});
    makePicture(own.path("palette.png"), {"-colors", "9", "-type", "palette"});
    makePicture(own.path("photo.jpg"));
    makePicture(own.path("gray.jpg"), {"-colorspace", "gray"});
    makePicture(own.path("progressive.jpg"), {"-interlace", "JPEG"});
    makePicture(own.path("cmyk.jpg"), {"-colorspace", "CMYK"});
    std::vector<std::string> words = {action};
    for (const std::string& name : own.names()) words.push_back(own.path(name));
    const ProgramResult result = program.run(words);
    EXPECT_EQ(result.status, 0) << action << result.errors;
    for (const std::string& name : own.names()) {
      const std::string path = own.path(name);
      const ProgramResult check = name.ends_with(".png")
                                      ? runProgram({"pngcheck", "-q", path})
                                      : runProgram({"djpeg", "-strict", "-outfile", "/dev/null", path});
      EXPECT_EQ(check.status, 0) << action << " " << name << ": " << check.output << check.errors;
      EXPECT_EQ(check.errors, "") << action << " " << name;
    }
  }
}

TEST_F(Conversions, AnAnimatedPngIsRefusedAndUntouched) {
  // Two frames of one pixel, made chunk by chunk from a still by adding what the animation extension asks
  // for.
  makePicture(folder.path("a.png"));
  Bytes bytes = readFile(folder.path("a.png"));
  const Bytes animation = {0, 0, 0, 8, 'a', 'c', 'T', 'L', 0, 0, 0, 2, 0, 0, 0, 0, 0xf3, 0x8d, 0x93, 0x70};
  bytes.insert(bytes.begin() + 33, animation.begin(), animation.end());
  writeFile(folder.path("a.png"), bytes);
  const ProgramResult result = program.run({"invert", folder.path("a.png")});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("a.png: animated or multi-frame images are not rewritten in place."),
            std::string::npos)
      << result.errors;
  EXPECT_EQ(readFile(folder.path("a.png")), bytes);
}

}  // namespace
}  // namespace ostra::test
