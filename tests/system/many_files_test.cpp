#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

// Peak memory, in KiB, of one request over `count` copies of the pictures; the request must succeed.
long peakOver(const InstalledProgram& program, const std::vector<std::string>& pictures, int count) {
  const TemporaryFolder folder;
  std::string list;
  for (int i = 0; i < count; ++i) {
    const fs::path& from = pictures[static_cast<std::size_t>(i) % pictures.size()];
    const std::string to = folder.path(std::to_string(i) + from.extension().string());
    fs::copy_file(from, to);
    list += to + '\0';
  }
  writeFile(folder.path("list"), list);
  // The shell's own peak is smaller than ours and ends before; `time` is a shell word on some machines only.
  const std::string script =
      "\"$0\" --files-from=\"$1\" invert & pid=$!; peak=0; fds=0; while kill -0 $pid 2>/dev/null; do "
      "now=$(sed -n 's/VmHWM:[^0-9]*\\([0-9]*\\).*/\\1/p' /proc/$pid/status 2>/dev/null); "
      "open=$(ls /proc/$pid/fd 2>/dev/null | wc -l); "
      "[ \"${now:-0}\" -gt \"$peak\" ] && peak=$now; [ \"$open\" -gt \"$fds\" ] && fds=$open; sleep 0.02; "
      "done; "
      "wait $pid; echo $? $peak $fds";
  ProgramOptions options;
  options.environment = program.environment();
  const ProgramResult result =
      runProgram({"bash", "-c", script, program.path(), folder.path("list")}, options);
  long status = -1, peak = 0, descriptors = 0;
  std::istringstream(result.output) >> status >> peak >> descriptors;
  EXPECT_EQ(status, 0) << result.errors;
  EXPECT_LT(descriptors, 40) << "descriptors are left open";
  return peak;
}

TEST(ManyFiles, FourThousandNeedNoMoreMemoryThanFourHundred) {
  OSTRA_NEEDS_PROGRAM("convert");
  const InstalledProgram program;
  const TemporaryFolder folder;
  makePicture(folder.path("a.png"), {"-resize", "48x32!"});
  makePicture(folder.path("b.jpg"), {"-resize", "48x32!"});
  makeTransparentPicture(folder.path("c.png"));
  const std::vector<std::string> pictures = {folder.path("a.png"), folder.path("b.jpg"),
                                             folder.path("c.png")};
  const long few = peakOver(program, pictures, 400);
  const long many = peakOver(program, pictures, 4000);
  ASSERT_GT(few, 0);
  EXPECT_LE(many, few + 10 * 1024) << "KiB; " << few << " after 400 files";
}

}  // namespace
}  // namespace ostra::test
