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

/// Whether the loader of libraries told, in any process of the program, of one that is ours.
bool loadedAModule(const TemporaryFolder& told) {
  for (const std::string& name : told.names()) {
    const Bytes text = readFile(told.path(name));
    if (std::string_view(reinterpret_cast<const char*>(text.data()), text.size()).find("/modules/ostra-") !=
        std::string_view::npos)
      return true;
  }
  return false;
}

TEST_F(Formats, NobodyPaysForModulesThatHisPicturesDoNotNeed) {
  program.installModules();
  makePicture(folder.path("a.png"));
  const TemporaryFolder quiet, loud;
  const auto tellingTo = [](const TemporaryFolder& place) {
    ProgramOptions options;
    options.environment = {"LD_DEBUG=files", "LD_DEBUG_OUTPUT=" + place.path("told")};
    return options;
  };
  EXPECT_EQ(program.run({"srgb", folder.path("a.png")}, tellingTo(quiet)).status, 0);
  EXPECT_FALSE(quiet.names().empty());
  EXPECT_FALSE(loadedAModule(quiet));
  EXPECT_EQ(program.run({"srgb", folder.path("a.webp")}, tellingTo(loud)).status, 0);
  EXPECT_TRUE(loadedAModule(loud));
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
