#include "tests/system/many_files.h"

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

TEST(ManyFiles, LeaveNothingBehindInTheProgram) {
  OSTRA_NEEDS_PROGRAM("convert");
  constexpr int kFiles = 900, kWarmUp = 300, kSpan = 300;
  const InstalledProgram program;
  const TemporaryFolder originals, folder;
  makePicture(originals.path("a.png"), {"-resize", "48x32!"});
  makePicture(originals.path("b.jpg"), {"-resize", "48x32!"});
  makeTransparentPicture(originals.path("c.png"));
  const std::vector<fs::path> pictures = {originals.path("a.png"), originals.path("b.jpg"),
                                          originals.path("c.png")};
  std::vector<std::string> paths;
  for (int i = 0; i < kFiles; ++i) {
    const fs::path& from = pictures[static_cast<std::size_t>(i) % pictures.size()];
    paths.push_back(folder.path(std::to_string(i) + from.extension().string()));
    fs::copy_file(from, paths.back());
  }
  const ManyFilesRun run = convertManyFiles(program, "invert", paths, std::chrono::milliseconds(2));
  ASSERT_EQ(run.result.status, 0) << run.result.errors;
  ASSERT_EQ(run.filesDone, paths.size());
  // A few kilobytes a file.
  const std::vector<Holding> all = holdings(1 << 20);
  EXPECT_THAT(whatGrew(run, all, kWarmUp, kSpan), testing::IsEmpty());
  for (const Holding& holding : all) {
    RecordProperty(holding.name, std::to_string(mostBetween(run, holding, 0, kFiles)));
    if (std::string(holding.name) == "zombies") continue;
    EXPECT_GT(mostBetween(run, holding, kWarmUp, kWarmUp + kSpan), 0u) << holding.name << " were not seen";
  }
}

}  // namespace
}  // namespace ostra::test
