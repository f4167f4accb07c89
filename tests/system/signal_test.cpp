#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/orphans.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

/// Who is sent the signal: a terminal sends it to all that came of the program.
enum class Target { program, everyProcess };

struct Stop {
  const char* name;
  int signal;
  Target target;
};

void PrintTo(const Stop& stop, std::ostream* out) { *out << stop.name; }

std::vector<pid_t> childrenOf(pid_t process) {
  std::vector<pid_t> found;
  std::error_code ended;
  for (fs::directory_iterator thread("/proc/" + std::to_string(process) + "/task", ended), last;
       !ended && thread != last; thread.increment(ended)) {
    std::ifstream children(thread->path() / "children");
    for (pid_t child = 0; children >> child;) found.push_back(child);
  }
  return found;
}

/// Whether a picture is being decoded: decoders are the children of a child.
bool isDecoding(pid_t process) {
  for (const pid_t child : childrenOf(process)) {
    for (const pid_t decoder : childrenOf(child)) {
      std::ifstream memory("/proc/" + std::to_string(decoder) + "/statm");
      if (std::size_t pages = 0; memory >> pages && pages > 0) return true;  // a zombie has none
    }
  }
  return false;
}

void sendToAll(pid_t process, int signal) {
  for (const pid_t child : childrenOf(process)) sendToAll(child, signal);
  kill(process, signal);
}

class Signals : public testing::TestWithParam<Stop> {
 protected:
  static constexpr int kPictures = 25;

  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    convert({"-size", "1200x900", "-seed", "5", "plasma:", "-depth", "8", before.path("a.png")});
    old = readFile(before.path("a.png"));
    ASSERT_EQ(program.run({"invert", before.path("a.png")}).status, 0);
    whole = readFile(before.path("a.png"));
    for (int i = 0; i < kPictures; ++i) {
      paths.push_back(folder.path(std::to_string(100 + i) + ".png"));
      writeFile(paths.back(), old);
    }
  }

  /// Sends the signal once, after some pictures and while another is being decoded.
  ProgramOptions stoppedInTheMidst() {
    ProgramOptions options;
    options.pause = std::chrono::milliseconds(1);
    options.watch = [this, numbers = fileNumbers()](pid_t process) {
      if (doneBefore > 0) return;
      const auto now = fileNumbers();
      const auto done = static_cast<std::size_t>(
          std::mismatch(now.begin(), now.end(), numbers.begin(), std::not_equal_to<>()).first - now.begin());
      if (done < 3 || !isDecoding(process)) return;
      doneBefore = done;
      if (GetParam().target == Target::program) kill(process, GetParam().signal);
      if (GetParam().target == Target::everyProcess) sendToAll(process, GetParam().signal);
    };
    return options;
  }

  std::vector<ino_t> fileNumbers() const {
    std::vector<ino_t> numbers;
    for (const std::string& path : paths) numbers.push_back(fileNumber(path));
    return numbers;
  }

  static ino_t fileNumber(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
  }

  InstalledProgram program;
  TemporaryFolder before, folder;
  std::vector<std::string> paths;
  Bytes old, whole;
  std::size_t doneBefore = 0;  // when the signal was sent
};

TEST_P(Signals, LetThePictureInWorkEndWholeAndLeaveTheRestAlone) {
  const Orphanage orphanage;
  std::vector<std::string> words = {"invert"};
  words.insert(words.end(), paths.begin(), paths.end());
  const ProgramResult result = program.run(words, stoppedInTheMidst());
  EXPECT_GT(doneBefore, 0u);
  EXPECT_EQ(result.status, 128 + GetParam().signal);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(Orphanage::endChildren(), 0) << "a process of ours was left behind";

  std::size_t converted = 0;
  while (converted < paths.size() && readFile(paths[converted]) == whole) ++converted;
  EXPECT_GT(converted, doneBefore) << "the picture in work did not end";
  EXPECT_LT(converted, paths.size()) << "the signal stopped nothing";
  for (std::size_t i = converted; i < paths.size(); ++i) EXPECT_EQ(readFile(paths[i]), old) << paths[i];
  EXPECT_EQ(folder.names().size(), paths.size());
}

INSTANTIATE_TEST_SUITE_P(Each, Signals,
                         testing::Values(Stop{"Interrupt", SIGINT, Target::program},
                                         Stop{"Terminate", SIGTERM, Target::program},
                                         Stop{"HangUp", SIGHUP, Target::program},
                                         Stop{"InterruptFromATerminal", SIGINT, Target::everyProcess},
                                         Stop{"HangUpOfATerminal", SIGHUP, Target::everyProcess}),
                         [](const testing::TestParamInfo<Stop>& stop) {
                           return std::string(stop.param.name);
                         });

}  // namespace
}  // namespace ostra::test
