#include "tests/system/bombs.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/platform/imageio/picture_files.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {

void PrintTo(const Bomb& bomb, std::ostream* out) { *out << bomb.name; }

namespace {

namespace fs = std::filesystem;
using std::chrono::duration;
using std::chrono::steady_clock;
using testing::HasSubstr;

/// As long as so many conversions of a picture of a megapixel, in the same run.
constexpr double kFewConversions = 15;
/// For each process, the program and its decoder.
constexpr std::size_t kMostMemory = std::size_t{256} << 20;

struct Timed {
  ProgramResult result;
  double seconds = 0;
};

class Bombs : public testing::TestWithParam<Bomb> {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "opj_compress", "cwebp", "heif-enc", "avifenc"})
      OSTRA_NEEDS_PROGRAM(name);
    program_.installModules();
  }

  Timed invert(const std::string& path) const {
    const auto start = steady_clock::now();
    ProgramResult result = program_.run({"--ui=none", "invert", path});
    return {std::move(result), duration<double>(steady_clock::now() - start).count()};
  }

  double secondsOfAnOrdinaryConversion() const {
    const std::string path = folder_.path("ordinary.jpg");
    convert({"-size", "1024x1024", "-seed", "7", "plasma:tomato-steelblue", path});
    const Timed run = invert(path);
    EXPECT_EQ(run.result.status, 0) << run.result.errors;
    return run.seconds;
  }

  /// Of the program that was run here. Decoders and their nursery are the same program.
  std::size_t processesLeft() const {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc")) {
      std::error_code none;
      if (fs::read_symlink(entry.path() / "exe", none) == program_.path()) ++count;
    }
    return count;
  }

  void expectRefused(const Timed& run, const std::string& name, const std::string& path) const {
    EXPECT_EQ(run.result.status, 1) << run.result.errors;
    EXPECT_THAT(run.result.errors, HasSubstr(name + ": "));
    EXPECT_TRUE(readFile(path) == original_) << "the file was changed";
  }

  InstalledProgram program_;
  TemporaryFolder folder_;
  Bytes original_;
};

void expectConverted(const Timed& run, const std::string& path, const std::string& size) {
  ASSERT_EQ(run.result.status, 0) << run.result.errors;
  const Layout layout = decoded(readFile(path)).layout;
  EXPECT_EQ(std::to_string(layout.width) + "x" + std::to_string(layout.height), size);
}

TEST_P(Bombs, CostNoMoreThanAFewOrdinaryConversions) {
  const std::string name = "bomb." + GetParam().extension, path = folder_.path(name);
  double slowest = 0, allowed = 0;
  // A machine that is busy elsewhere may be slow once, not three times.
  for (int left = 3; left > 0; --left) {
    original_ = GetParam().file();
    writeFile(path, original_);
    Bytes().swap(original_);  // a child would have it too
    allowed = kFewConversions * secondsOfAnOrdinaryConversion();
    const Timed run = invert(path);
    original_ = GetParam().file();
    if (GetParam().picture.empty()) {
      expectRefused(run, name, path);
    } else {
      expectConverted(run, path, GetParam().picture);
    }
    EXPECT_LT(run.result.peakMemory, kMostMemory);
    EXPECT_EQ(processesLeft(), 0u);
    slowest = run.seconds;
    RecordProperty("conversions", std::to_string(run.seconds * kFewConversions / allowed));
    RecordProperty("megabytes", static_cast<int>(run.result.peakMemory >> 20));
    if (slowest < allowed || HasFailure()) break;
  }
  EXPECT_LT(slowest, allowed) << "in the time of " << kFewConversions << " ordinary conversions";
}

std::string nameOf(const testing::TestParamInfo<Bomb>& bomb) { return bomb.param.name; }

INSTANTIATE_TEST_SUITE_P(Png, Bombs, testing::ValuesIn(pngBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Jpeg, Bombs, testing::ValuesIn(jpegBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Metadata, Bombs, testing::ValuesIn(metadataBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Gif, Bombs, testing::ValuesIn(gifBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Bitmap, Bombs, testing::ValuesIn(bitmapBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(ReadOnly, Bombs, testing::ValuesIn(readOnlyBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Tiff, Bombs, testing::ValuesIn(tiffBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Modern, Bombs, testing::ValuesIn(modernBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Heif, Bombs, testing::ValuesIn(heifBombs()), nameOf);
INSTANTIATE_TEST_SUITE_P(Light, Bombs, testing::ValuesIn(lightBombs()), nameOf);

/// A file without an end, as far as anybody can tell: only its beginning is on the disk.
class EndlessFiles : public Bombs {
 protected:
  void expectRefusedSoon(std::uint64_t size) {
    const std::string path = folder_.path(GetParam().name + "." + GetParam().extension);
    const Bytes beginning = GetParam().file();
    writeFile(path, beginning);
    fs::resize_file(path, size);
    const double allowed = kFewConversions * secondsOfAnOrdinaryConversion();
    const Timed run = invert(path);
    EXPECT_EQ(run.result.status, 1);
    EXPECT_THAT(run.result.errors, HasSubstr(fs::path(path).filename().string() + ": "));
    EXPECT_LT(run.result.peakMemory, kMostMemory);
    EXPECT_LT(run.seconds, std::max(allowed, 2.0));
    EXPECT_EQ(fs::file_size(path), size);
    EXPECT_EQ(processesLeft(), 0u);
  }
};

TEST_P(EndlessFiles, AreRefusedSoon) {
  expectRefusedSoon(std::uint64_t{10} << 30);  // beyond the limit
  expectRefusedSoon(std::uint64_t{6} << 30);   // within
}

INSTANTIATE_TEST_SUITE_P(Beginning, EndlessFiles,
                         testing::Values(Bomb{"Nothing", "png", [] { return Bytes(16); }},
                                         Bomb{"JpegSignature", "jpg",
                                              [] { return Bytes{0xFF, 0xD8, 0xFF, 0xE0, 0, 16}; }},
                                         Bomb{"JpegFill", "jpg", [] { return Bytes(1 << 16, 0xFF); }},
                                         Bomb{"PngHeader", "png",
                                              [] {
                                                const Bytes png = pngBombs().front().file();
                                                return Bytes(png.begin(), png.begin() + 33);
                                              }}),
                         nameOf);

}  // namespace
}  // namespace ostra::test
