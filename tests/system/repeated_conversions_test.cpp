#include <gtest/gtest.h>

#include "platform/graphics/color_space.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

struct Action {
  const char* name;
  std::vector<std::string> words;
};

struct Form {
  const char* name;
  int bits;
  int samples;  // gray, gray and alpha, RGB, RGBA
};

constexpr std::size_t kSide = 256;

/// Every opacity in a row, every strength of a colour in a column: premultiplied storage has no other pairs.
Bytes rawPicture(const Form& form) {
  Bytes raw;
  const bool alpha = form.samples == 2 || form.samples == 4;
  for (std::size_t y = 0; y < kSide; ++y)
    for (std::size_t x = 0; x < kSide; ++x)
      for (int c = 0; c < form.samples; ++c) {
        const bool isAlpha = alpha && c == form.samples - 1;
        const std::size_t high = isAlpha ? x : (y + 85 * static_cast<std::size_t>(c)) % kSide;
        // Not the same byte twice, or 16 bits would be 8.
        if (form.bits == 16)
          raw.push_back(static_cast<std::uint8_t>(isAlpha && high == 255 ? 255 : x * 7 + y));
        raw.push_back(static_cast<std::uint8_t>(high));
      }
  return raw;
}

class RepeatedConversion : public testing::Test {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }

  std::string pictureOf(const Form& form, std::string_view space = {}) const {
    const char* const maps[] = {"", "gray", "graya", "rgb", "rgba"};
    const char* const types[] = {"", "0", "4", "2", "6"};
    std::string path = folder.path(std::string(form.name) + ".png");
    writeFile(folder.path("raw"), rawPicture(form));
    std::vector<std::string> words = {"-size",
                                      "256x256",
                                      "-depth",
                                      std::to_string(form.bits),
                                      "-endian",
                                      "LSB",
                                      maps[form.samples] + (":" + folder.path("raw"))};
    if (!space.empty()) {
      writeFile(folder.path("source.icc"), CGColorSpace::createWithName(space)->iccData());
      words.insert(words.end(), {"-profile", folder.path("source.icc")});
    }
    words.insert(words.end(), {"-define", std::string("png:color-type=") + types[form.samples], "-define",
                               "png:bit-depth=" + std::to_string(form.bits), path});
    convert(words);
    return path;
  }
  void run(const Action& action, const std::string& path) const {
    std::vector<std::string> words = action.words;
    words.push_back(path);
    const ProgramResult result = program.run(words);
    ASSERT_EQ(result.status, 0) << action.name << " " << path << result.errors;
    EXPECT_EQ(result.errors, "");
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

const Form kForms[] = {{"gray8", 8, 1}, {"gray16", 16, 1}, {"graya8", 8, 2}, {"graya16", 16, 2},
                       {"rgb8", 8, 3},  {"rgb16", 16, 3},  {"rgba8", 8, 4},  {"rgba16", 16, 4}};

TEST_F(RepeatedConversion, ToOneSpaceChangesNoPixelOfAPng) {
  const std::vector<Action> actions = {
      {"srgb", {"srgb"}},
      {"grayscale", {"grayscale"}},
      {"Display P3", {"convert-color-profile", "--profile", "Display P3"}},
      {"ROMM", {"convert-color-profile", "--profile", "ProPhoto RGB (ROMM)"}},
      {"gray profile", {"convert-color-profile", "--profile", "Generic Gray Gamma 2.2"}},
  };
  for (const Action& action : actions)
    for (const Form& form : kForms) {
      const bool gray = form.samples < 3;
      const std::string path = pictureOf(form, gray ? "" : kCGColorSpaceAdobeRGB1998);
      const auto source = samples16(path, "RGBA");
      run(action, path);
      const auto once = samples16(path, "RGBA");
      if (!gray) {
        EXPECT_NE(once, source) << action.name << " did nothing to " << form.name;
      }
      run(action, path);
      EXPECT_EQ(samples16(path, "RGBA"), once) << action.name << " of " << form.name;
    }
}

TEST_F(RepeatedConversion, InvertingTwiceGivesEveryOpaquePngBack) {
  const Action invert = {"invert", {"invert"}};
  for (const Form& form : kForms) {
    if (form.samples == 2 || form.samples == 4) continue;
    for (const std::string_view space :
         {std::string_view(),
          form.samples == 1 ? kCGColorSpaceGenericGrayGamma2_2 : kCGColorSpaceDisplayP3}) {
      const std::string path = pictureOf(form, space);
      const auto before = samples16(path, "RGB");
      run(invert, path);
      const auto inverted = samples16(path, "RGB");
      ASSERT_EQ(inverted.size(), before.size());
      for (std::size_t i = 0; i < before.size(); ++i) ASSERT_EQ(inverted[i], 65535 - before[i]) << form.name;
      run(invert, path);
      EXPECT_EQ(samples16(path, "RGB"), before) << form.name;
    }
  }
}

// Each inversion keeps opacity, and what premultiplied storage can hold of a colour comes back from the
// second.
TEST_F(RepeatedConversion, InvertingATransparentPngDoesNotDriftAfterTheFirstTime) {
  const Action invert = {"invert", {"invert"}};
  const std::string path = pictureOf({"rgba8", 8, 4});
  run(invert, path);
  const auto first = samples8(path, "RGBA");
  run(invert, path);
  run(invert, path);
  EXPECT_EQ(samples8(path, "RGBA"), first);
}

}  // namespace
}  // namespace ostra::test
