#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

class Gif : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }

  void convertWith(const std::string& action, const std::string& path) const {
    const ProgramResult result = program.run({action, path});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
  }
  std::string picture(const std::vector<std::string>& settings = {}) const {
    makePicture(folder.path("a.gif"), settings);
    return folder.path("a.gif");
  }
  // Bars of pure colours on a transparent ground.
  std::string transparentPicture() const {
    convert({"-size", "60x40", "xc:none", "-fill", "red", "-draw", "rectangle 5,5 20,30", "-fill", "#336699",
             "-draw", "rectangle 25,8 50,35", folder.path("a.gif")});
    return folder.path("a.gif");
  }
  void animation() const {
    convert({"-delay", "10", "-size", "40x30", "xc:red", "xc:blue", "xc:green", folder.path("a.gif")});
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(Gif, IsRewrittenInPlaceByEveryActionThatKeepsTheFormat) {
  for (const char* action : {"grayscale", "srgb", "invert"}) {
    const std::string path = picture();
    convertWith(action, path);
    EXPECT_EQ(identify(path, "%m %wx%h"), "GIF 97x61") << action;
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.gif"}) << action;
  }
}

TEST_F(Gif, InTheSameColoursKeepsEveryPixel) {
  for (const char* interlace : {"None", "GIF"}) {
    const std::string path = picture({"-interlace", interlace});
    const auto before = samples8(path, "RGBA");
    convertWith("srgb", path);
    EXPECT_EQ(samples8(path, "RGBA"), before);
  }
}

TEST_F(Gif, InvertedTwiceIsTheSameAgain) {
  const std::string path = picture();
  const auto before = samples8(path, "RGB");
  convertWith("invert", path);
  const auto inverted = samples8(path, "RGB");
  for (std::size_t i = 0; i < before.size(); ++i) ASSERT_EQ(inverted[i], 255 - before[i]) << i;
  convertWith("invert", path);
  EXPECT_EQ(samples8(path, "RGB"), before);
}

TEST_F(Gif, MadeGrayIsWhatAPngOfTheSamePixelsBecomes) {
  const std::string path = picture();
  // Without the numbers that ImageMagick would add: they are not quite sRGB's.
  convert({path, "-define", "png:exclude-chunks=gAMA,cHRM", "PNG24:" + folder.path("b.png")});
  convertWith("grayscale", path);
  convertWith("grayscale", folder.path("b.png"));
  EXPECT_EQ(samples8(path, "RGB"), samples8(folder.path("b.png"), "RGB"));
}

TEST_F(Gif, KeepsItsTransparency) {
  for (const char* action : {"grayscale", "srgb", "invert"}) {
    const std::string path = transparentPicture();
    const auto before = samples8(path, "RGBA");
    convertWith(action, path);
    const auto after = samples8(path, "RGBA");
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); i += 4) {
      ASSERT_EQ(after[i + 3], before[i + 3]) << action << " pixel " << i / 4;
      if (before[i + 3] == 0) continue;
      const std::string what = action;
      if (what != "grayscale") {
        ASSERT_EQ(after[i], what == "srgb" ? before[i] : 255 - before[i]) << what;
      }
    }
  }
}

TEST_F(Gif, BecomesAJpegBesideItself) {
  const std::string path = transparentPicture();
  const Bytes before = readFile(path);
  convertWith("jpg", path);
  EXPECT_EQ(readFile(path), before);
  EXPECT_EQ(identify(folder.path("a.jpg"), "%m %wx%h"), "JPEG 60x40");
  EXPECT_GE(samples8(folder.path("a.jpg"), "RGB")[0], 250) << "transparency is white";
}

TEST_F(Gif, ThatIsAnimatedIsRefusedAndUntouched) {
  for (const char* action : {"grayscale", "srgb", "invert"}) {
    animation();
    const Bytes before = readFile(folder.path("a.gif"));
    const ProgramResult result = program.run({action, folder.path("a.gif")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find("a.gif: animated or multi-frame images are not rewritten in place."),
              std::string::npos)
        << result.errors;
    EXPECT_EQ(readFile(folder.path("a.gif")), before);
  }
}

TEST_F(Gif, ThatIsAnimatedGivesItsFirstFrameToAJpeg) {
  animation();
  convertWith("jpg", folder.path("a.gif"));
  const auto samples = samples8(folder.path("a.jpg"), "RGB");
  ASSERT_EQ(samples.size(), 40u * 30 * 3);
  EXPECT_GE(samples[0], 250);
  EXPECT_LE(samples[1], 5);
}

TEST_F(Gif, KeepsCommentsAndXmp) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const std::string path = picture();
  ASSERT_EQ(
      runProgram({"exiftool", "-q", "-overwrite_original", "-Comment=by hand", "-XMP-dc:Title=Tower", path})
          .status,
      0);
  convertWith("invert", path);
  EXPECT_EQ(runProgram({"exiftool", "-s3", "-Comment", "-XMP-dc:Title", path}).output, "by hand\nTower\n");
}

TEST_F(Gif, InAnotherProfileCarriesIt) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const std::string path = picture();
  const ProgramResult result = program.run({"--profile", "Display P3", "convert-color-profile", path});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(runProgram({"exiftool", "-s3", "-ICC_Profile:ProfileDescription", path}).output, "Display P3\n");
}

TEST_F(Gif, ThatIsCutOffIsRefusedAndUntouched) {
  const std::string path = picture();
  Bytes bytes = readFile(path);
  bytes.resize(bytes.size() * 2 / 3);
  writeFile(path, bytes);
  const ProgramResult result = program.run({"invert", path});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.errors.find("a.gif: the image could not be decoded."), std::string::npos) << result.errors;
  EXPECT_EQ(readFile(path), bytes);
}

}  // namespace
}  // namespace ostra::test
