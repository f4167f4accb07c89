#include "tests/system/large_pictures.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

struct Case {
  const char* name;
  const char* action;
  const char* extension;
  LargePicture picture;
  // Bytes of a pixel as decoded and as drawn.
  std::size_t decoded, drawn;
};

void PrintTo(const Case& row, std::ostream* out) { *out << row.name; }

class LargePictures : public testing::TestWithParam<Case> {};

/// The program with its libraries, the threads' stacks, the metadata: what every picture costs.
constexpr std::size_t kBesides = std::size_t{40} << 20;

TEST_P(LargePictures, NeedThePixelsTheSurfaceAndTheFile) {
  const Case& row = GetParam();
  const InstalledProgram program;
  const TemporaryFolder folder;
  const std::string path = folder.path("a." + std::string(row.extension));
  if (fs::path(path).extension() == ".png") {
    writeLargePng(path, row.picture);
  } else {
    writeLargeJpeg(path, row.picture);
  }
  const ProgramResult result = program.run({row.action, path});
  ASSERT_EQ(result.status, 0) << result.errors;
  const std::string written = std::string(row.action) == "jpg" ? folder.path("a.jpg") : path;
  const std::size_t file = fs::file_size(written);
  RecordProperty("megabytes", static_cast<int>(result.peakMemory >> 20));
  EXPECT_LE(result.peakMemory, row.picture.pixels() * (row.decoded + row.drawn) + file + kBesides);
  EXPECT_GT(result.peakMemory, row.picture.pixels() * row.decoded) << "that cannot be all";
}

const std::vector<Case> kCases = {
    {"Jpeg", "srgb", "jpg", {.width = 5000, .height = 3200, .samples = 3}, 4, 4},
    {"Png", "srgb", "png", {.width = 5000, .height = 3200, .samples = 3}, 4, 4},
    {"TransparentPng", "srgb", "png", {.width = 5000, .height = 3200, .samples = 4}, 4, 4},
    {"TransparentPngToJpeg", "jpg", "png", {.width = 5000, .height = 3200, .samples = 4}, 4, 4},
    {"DeepNoise",
     "srgb",
     "png",
     {.width = 3000, .height = 2100, .samples = 3, .bits = 16, .noise = true},
     8,
     8},
    {"DeepTransparentNoise",
     "srgb",
     "png",
     {.width = 3000, .height = 2100, .samples = 4, .bits = 16, .noise = true},
     8,
     8},
    {"DeepGrayNoise",
     "srgb",
     "png",
     {.width = 4000, .height = 3000, .samples = 1, .bits = 16, .noise = true},
     2,
     8},
};

INSTANTIATE_TEST_SUITE_P(Kind, LargePictures, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace ostra::test
