#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using testing::HasSubstr;

class Formats : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("cwebp");
    makePicture(folder.path("source.png"));
    ASSERT_EQ(runProgram({"cwebp", "-quiet", folder.path("source.png"), "-o", folder.path("a.webp")}).status,
              0);
    std::filesystem::remove(folder.path("source.png"));
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(Formats, AWebpBecomesAPngBesideIt) {
  program.installModules();
  const Bytes before = readFile(folder.path("a.webp"));
  const ProgramResult result = program.run({"invert", folder.path("a.webp")});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(readFile(folder.path("a.webp")), before);
  EXPECT_EQ(identify(folder.path("a.png"), "%m %wx%h"), "PNG 97x61");
}

TEST_F(Formats, WithoutItsModuleOneIsNoImageAndThePackageIsNamed) {
  const Bytes before = readFile(folder.path("a.webp"));
  const ProgramResult result = program.run({"srgb", folder.path("a.webp")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("a.webp: not an image ImageIO can read."));
  EXPECT_THAT(result.errors, HasSubstr("ostra-codecs"));
  EXPECT_EQ(readFile(folder.path("a.webp")), before);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.webp"});
}

TEST_F(Formats, AreListedWithWhatIsMissing) {
  EXPECT_THAT(program.run({"formats"}).output,
              HasSubstr("WebP\torg.webmproject.webp\twebp\timage/webp\tread\t"
                        "counts the frames of an animation\tmissing: install ostra-codecs\n"));
  program.installModules();
  const ProgramResult result = program.run({"formats"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("PNG\tpublic.png\tpng\timage/png\tread and written\t"));
  EXPECT_THAT(result.output, HasSubstr("counts the frames of an animation\n"));
  EXPECT_THAT(result.output, testing::Not(HasSubstr("missing")));
}

}  // namespace
}  // namespace ostra::test
