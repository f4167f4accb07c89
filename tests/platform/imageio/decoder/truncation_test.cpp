#include <algorithm>
#include <functional>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/platform/imageio/decoder/confined.h"
#include "tests/platform/imageio/jpeg_files.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra {
namespace {

using test::Confined;

/// A picture, and how many bytes its file may lack at the end and still be whole.
struct Sample {
  const char* name;
  std::function<Bytes()> file;
  std::size_t mayLack;
};

void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }

constexpr std::size_t kEndMark = 2;  // of a JPEG of one scan of Huffman codes

class Truncation : public testing::TestWithParam<Sample> {
 protected:
  static std::optional<Pixels> decoded(ConfinedDoor& door, ByteView file) {
    auto answer = door.open(test::fileOf(file), Limits{});
    auto* reader = std::get_if<std::unique_ptr<Reader>>(&answer);
    if (reader == nullptr) return std::nullopt;
    auto pixels = (*reader)->decode(0);
    if (auto* found = std::get_if<Pixels>(&pixels)) return std::move(*found);
    return std::nullopt;
  }
};

TEST_P(Truncation, GivesTheWholePictureOrNone) {
  OSTRA_NEEDS_PROGRAM("cjpeg");
  OSTRA_NEEDS_PROGRAM("convert");
  const Bytes file = GetParam().file();
  Confined confined;
  const auto whole = decoded(confined.door, file);
  ASSERT_TRUE(whole);
  const std::size_t step = std::max<std::size_t>(1, file.size() / 300);
  const auto expectRightAt = [&](std::size_t size) {
    const auto pixels = decoded(confined.door, ByteView(file).first(size));
    EXPECT_EQ(pixels.has_value(), size + GetParam().mayLack >= file.size())
        << size << " of " << file.size() << " bytes";
    if (!pixels) return;
    EXPECT_TRUE(std::ranges::equal(pixels->bytes.view, whole->bytes.view)) << size;
  };
  for (std::size_t size = 0; size < file.size(); size += step) expectRightAt(size);
  for (std::size_t lacking = 1; lacking < 16; ++lacking) expectRightAt(file.size() - lacking);
}

Bytes png(const std::vector<std::string>& settings) {
  std::vector<std::string> words = {"-size", "47x33", "-seed", "3", "plasma:tomato-steelblue", "-strip"};
  words.insert(words.end(), settings.begin(), settings.end());
  return test::madeByImageMagick(words, "png");
}

INSTANTIATE_TEST_SUITE_P(
    Of, Truncation,
    testing::Values(Sample{"BaselineJpeg", [] { return test::jpegOf({"-baseline"}); }, kEndMark},
                    Sample{"GrayJpeg", [] { return test::jpegOf({"-grayscale"}); }, kEndMark},
                    Sample{"RestartingJpeg",
                           [] {
                             return test::jpegOf({"-restart", "1B"});
                           },
                           kEndMark},
                    Sample{"ProgressiveJpeg", [] { return test::jpegOf({"-progressive"}); }, 0},
                    Sample{"ArithmeticJpeg", [] { return test::jpegOf({"-arithmetic"}); }, 0},
                    Sample{"ArithmeticProgressiveJpeg",
                           [] {
                             return test::jpegOf({"-arithmetic", "-progressive"});
                           },
                           0},
                    Sample{"Png",
                           [] {
                             return png({"-depth", "8"});
                           },
                           0},
                    Sample{"InterlacedPng",
                           [] {
                             return png({"-interlace", "PNG"});
                           },
                           0},
                    Sample{"PalettePng",
                           [] {
                             return png({"-colors", "15", "-type", "palette"});
                           },
                           0},
                    Sample{"DeepGrayPng",
                           [] {
                             return png({"-colorspace", "gray", "-depth", "16"});
                           },
                           0}),
    [](const testing::TestParamInfo<Sample>& sample) { return std::string(sample.param.name); });

}  // namespace
}  // namespace ostra
