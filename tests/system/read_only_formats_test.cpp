#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

struct Kind {
  const char* extension;
  std::vector<std::string> settings;
};

class ReadOnlyFormats : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { OSTRA_NEEDS_PROGRAM("convert"); }
};

TEST_P(ReadOnlyFormats, GiveAPngBesideThemselves) {
  const InstalledProgram program;
  const TemporaryFolder folder;
  const std::string name = std::string("a.") + GetParam().extension, path = folder.path(name);
  makePicture(path, GetParam().settings);
  const Bytes before = readFile(path);
  for (const char* action : {"srgb", "invert", "grayscale"}) {
    const ProgramResult result = program.run({action, path});
    EXPECT_EQ(result.status, 0) << action << result.errors;
    EXPECT_EQ(readFile(path), before);
    EXPECT_EQ(identify(folder.path("a.png"), "%m %wx%h"), "PNG 97x61") << action;
  }
  const ProgramResult result = program.run({"jpg", path});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(identify(folder.path("a.jpg"), "%m %wx%h"), "JPEG 97x61");
  EXPECT_EQ(folder.names().size(), 3u);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, ReadOnlyFormats,
                         testing::Values(Kind{"psd", {}}, Kind{"psd", {"-depth", "16"}},
                                         Kind{"psd", {"-colorspace", "CMYK"}},
                                         Kind{"psd", {"-colorspace", "gray"}}, Kind{"hdr", {}}));

}  // namespace
}  // namespace ostra::test
