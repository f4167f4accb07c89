#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

// What holds for each format alike, whichever it is.

namespace ostra::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

constexpr const char* kNoImage = "not an image ImageIO can read.";

struct Format {
  const char* name;
  const char* extension;
  /// What ImageMagick calls it; none where it cannot read it.
  const char* written;
  bool isWritten;
  std::vector<std::string> settings = {};
  /// A file without a signature may be anything.
  bool hasSignature = true;
};

void PrintTo(const Format& format, std::ostream* out) { *out << format.name; }

const Format kFormats[] = {
    {"Png", "png", "PNG", true},
    {"Jpeg", "jpg", "JPEG", true},
    {"Gif", "gif", "GIF", true, {"-colors", "40"}},
    {"Tiff", "tif", "TIFF", true},
    {"Bmp", "bmp", "BMP3", true},
    {"Ico", "ico", "ICO", true},
    {"Tga", "tga", "TGA", true, {}, false},
    {"Ppm", "ppm", "PPM", true},
    {"Heic", "heic", "HEIC", true},
    {"Avif", "avif", "HEIC", true},
    {"Jpeg2000", "jp2", "JP2", true},
    {"Webp", "webp", "WEBP", false},
    {"JpegXl", "jxl", "JXL", false},
    {"Photoshop", "psd", "PSD", false},
    {"Radiance", "hdr", "HDR", false},
};

class EveryFormat : public testing::TestWithParam<Format> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("cjxl");
    program.installModules();
    make(path());
    original = readFile(path());
  }

  std::string name() const { return std::string("a.") + GetParam().extension; }
  std::string path() const { return folder.path(name()); }
  void make(const std::string& to) const {
    if (std::string_view(GetParam().extension) != "jxl") return makePicture(to, GetParam().settings);
    const TemporaryFolder other;
    makePicture(other.path("a.png"));
    ASSERT_EQ(runProgram({"cjxl", "--quiet", other.path("a.png"), to}).status, 0);
  }
  void expectRefused(const ProgramResult& result, const std::string& reason) const {
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(name() + ": " + reason));
    EXPECT_THAT(folder.names(), ElementsAre(name()));
  }

  InstalledProgram program;
  TemporaryFolder folder;
  Bytes original;
};

TEST_P(EveryFormat, IsRewrittenInPlaceOrGetsAPngBesideIt) {
  const ProgramResult result = program.run({"invert", path()});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  if (GetParam().isWritten) {
    EXPECT_THAT(folder.names(), ElementsAre(name()));
    EXPECT_EQ(identify(path(), "%m %wx%h"), std::string(GetParam().written) + " 97x61");
    EXPECT_NE(readFile(path()), original);
  } else {
    EXPECT_THAT(folder.names(), UnorderedElementsAre(name(), "a.png"));
    EXPECT_EQ(identify(folder.path("a.png"), "%m %wx%h"), "PNG 97x61");
    EXPECT_EQ(readFile(path()), original);
  }
}

TEST_P(EveryFormat, BecomesAJpeg) {
  const ProgramResult result = program.run({"grayscale-jpg", path()});
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(identify(folder.path("a.jpg"), "%m %wx%h %[channels]"), "JPEG 97x61 gray");
  if (name() == "a.jpg") return;
  EXPECT_THAT(folder.names(), UnorderedElementsAre(name(), "a.jpg"));
  EXPECT_EQ(readFile(path()), original);
}

TEST_P(EveryFormat, IsKnownByItsBytesWhateverItsName) {
  const std::string disguised = folder.path("b.txt");
  std::filesystem::rename(path(), disguised);
  const ProgramResult result = program.run({"srgb", disguised});
  ASSERT_EQ(result.status, 0) << result.errors;
  if (GetParam().isWritten) {
    EXPECT_THAT(folder.names(), ElementsAre("b.txt"));
  } else {
    EXPECT_THAT(folder.names(), UnorderedElementsAre("b.txt", "b.png"));
  }
}

TEST_P(EveryFormat, WithJunkBeforeItIsNoImage) {
  if (!GetParam().hasSignature) return;
  Bytes file = {'j', 'u', 'n', 'k'};
  file.insert(file.end(), original.begin(), original.end());
  writeFile(path(), file);
  expectRefused(program.run({"srgb", path()}), kNoImage);
  EXPECT_EQ(readFile(path()), file);
}

TEST_P(EveryFormat, ThatIsCutOffIsRefused) {
  for (const std::size_t part : {1u, 5u, 9u}) {
    const Bytes file(original.begin(),
                     original.begin() + static_cast<std::ptrdiff_t>(original.size() * part / 10));
    writeFile(path(), file);
    for (const char* action : {"srgb", "jpg"}) {
      expectRefused(program.run({action, path()}), "");
      EXPECT_EQ(readFile(path()), file) << action << " of " << part << " tenths";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Format, EveryFormat, testing::ValuesIn(kFormats),
                         [](const auto& test) { return std::string(test.param.name); });

class SeveralFrames : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    program.installModules();
  }
  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(SeveralFrames, OfATiffAreRefusedInPlaceAndGiveTheirFirstToAJpeg) {
  const std::string path = folder.path("two.tif");
  convert({"-size", "31x17", "xc:red", "-size", "20x10", "xc:blue", path});
  const Bytes before = readFile(path);
  const ProgramResult refused = program.run({"grayscale", path});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors,
              HasSubstr("two.tif: animated or multi-frame images are not rewritten in place."));
  EXPECT_EQ(readFile(path), before);
  EXPECT_EQ(program.run({"grayscale-jpg", path}).status, 0);
  EXPECT_EQ(identify(folder.path("two.jpg"), "%m %wx%h"), "JPEG 31x17");
  EXPECT_EQ(readFile(path), before);
}

TEST_F(SeveralFrames, OfAWebpGiveTheirFirstToAPngAndToAJpeg) {
  const std::string path = folder.path("photo.raw.webp");
  convert({"-size", "31x17", "xc:red", "xc:blue", "-define", "webp:lossless=true", path});
  EXPECT_EQ(program.run({"srgb", path}).status, 0);
  EXPECT_EQ(program.run({"jpg", path}).status, 0);
  EXPECT_THAT(folder.names(), UnorderedElementsAre("photo.raw.webp", "photo.raw.png", "photo.raw.jpg"));
  EXPECT_EQ(identify(folder.path("photo.raw.png"), "%m %wx%h %[pixel:p{3,3}]"), "PNG 31x17 srgb(255,0,0)");
}

}  // namespace
}  // namespace ostra::test
