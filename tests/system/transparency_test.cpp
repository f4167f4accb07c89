#include <cmath>

#include <gtest/gtest.h>

#include "platform/graphics/color_space.h"
#include "tests/platform/graphics/reference_colors.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

class Transparency : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }

  void run(const std::string& action, const std::string& path) const {
    const ProgramResult result = program.run({action, path});
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
  }
  void writePng(const std::string& path, const std::vector<unsigned>& samples, int bits) const {
    Bytes raw;
    for (const unsigned sample : samples) {
      raw.push_back(static_cast<std::uint8_t>(sample));
      if (bits == 16) raw.push_back(static_cast<std::uint8_t>(sample >> 8));
    }
    writeFile(folder.path("raw"), raw);
    writeFile(folder.path("p3.icc"), CGColorSpace::createWithName(kCGColorSpaceDisplayP3)->iccData());
    convert({"-size", std::to_string(samples.size() / 4) + "x1", "-depth", std::to_string(bits), "-endian",
             "LSB", "rgba:" + folder.path("raw"), "-profile", folder.path("p3.icc"), "-define",
             "png:color-type=6", "-define", "png:bit-depth=" + std::to_string(bits), path});
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

// Divided by its opacity, converted, multiplied, and divided again for the file: what premultiplied storage
// of this depth can hold of the colour in double precision, and not a step of opacity less.
TEST_F(Transparency, KeepsItsOpacityExactlyAndItsColourAsFarAsItIsStored) {
  for (const int bits : {8, 16}) {
    const unsigned most = bits == 8 ? 255 : 65535;
    std::vector<unsigned> samples;
    for (const unsigned alpha : {0u, 1u, 2u, most / 4, most / 2, most - 1, most})
      for (unsigned step = 0; step < 60; ++step)
        samples.insert(samples.end(), {step * 37 % 256 * (most / 255), step * 91 % 256 * (most / 255),
                                       step * 151 % 256 * (most / 255), alpha});
    const std::string path = folder.path(std::to_string(bits) + ".png");
    writePng(path, samples, bits);
    run("srgb", path);
    const auto found = samples16(path, "RGBA");
    ASSERT_EQ(found.size(), samples.size());
    for (std::size_t i = 0; i < samples.size(); i += 4) {
      const unsigned alpha = samples[i + 3];
      ASSERT_EQ(found[i + 3], bits == 8 ? alpha * 257 : alpha);
      const Values wanted = convertByNumbers(
          kCGColorSpaceDisplayP3, kCGColorSpaceSRGB,
          {samples[i] / double(most), samples[i + 1] / double(most), samples[i + 2] / double(most)});
      for (std::size_t c = 0; c < 3; ++c) {
        // Half a step of the product, of the quotient, and one of the conversion.
        const double step = 65535.0 / most, tolerance = alpha == 0 ? 0 : (0.5 * most / alpha + 1.5) * step;
        ASSERT_NEAR(found[i + c], alpha == 0 ? 0 : wanted[c] * 65535, tolerance + 0.5)
            << bits << " bits, opacity " << alpha << ", pixel " << i / 4;
      }
    }
  }
}

TEST_F(Transparency, BecomesWhiteWhateverBackgroundTheFileAsksFor) {
  const std::string path = folder.path("a.png");
  convert({"-size", "16x16", "xc:rgba(0,0,0,0)", "-background", "red", "-define", "png:color-type=6",
           "-define", "png:include-chunk=bKGD", path});
  const Bytes bytes = readFile(path);
  const std::string text(bytes.begin(), bytes.end());
  ASSERT_NE(text.find("bKGD"), std::string::npos) << "not the file that was asked for";
  run("jpg", path);
  for (const std::uint8_t sample : samples8(folder.path("a.jpg"), "RGB")) ASSERT_EQ(sample, 255);
}

// Where one of two profiles cannot be meant: no failure and not a word, the picture counts as untagged.
TEST_F(Transparency, APictureWithAProfileOfAnotherModelCountsAsUntagged) {
  writeFile(folder.path("gray.icc"),
            CGColorSpace::createWithName(kCGColorSpaceGenericGrayGamma2_2)->iccData());
  writeFile(folder.path("rgb.icc"), CGColorSpace::createWithName(kCGColorSpaceROMMRGB)->iccData());
  OSTRA_NEEDS_PROGRAM("exiftool");
  struct Case {
    const char* file;
    std::vector<std::string> settings;
    const char* profile;
  };
  for (const Case& test : {Case{"a.png", {"-define", "png:color-type=2"}, "gray.icc"},
                           Case{"a.jpg", {}, "gray.icc"}, Case{"b.png", {"-colorspace", "gray"}, "rgb.icc"},
                           Case{"b.jpg", {"-colorspace", "gray"}, "rgb.icc"}}) {
    const std::string path = folder.path(test.file);
    makePicture(path, test.settings);
    const ProgramResult tagged = runProgram(
        {"exiftool", "-q", "-m", "-overwrite_original", "-ICC_Profile<=" + folder.path(test.profile), path});
    ASSERT_EQ(tagged.status, 0) << tagged.errors;
    const bool png = path.ends_with(".png");
    const auto before = samples8(path, "RGB");
    run(std::string(test.file).starts_with("a") ? "srgb" : "grayscale", path);
    const auto after = samples8(path, "RGB");
    ASSERT_EQ(after.size(), before.size());
    if (png) {
      EXPECT_EQ(after, before) << test.file;
    } else {
      double sum = 0;
      for (std::size_t i = 0; i < after.size(); ++i) sum += std::abs(int{after[i]} - int{before[i]});
      EXPECT_LT(sum / static_cast<double>(after.size()), 3) << test.file;
    }
  }
}

}  // namespace
}  // namespace ostra::test
