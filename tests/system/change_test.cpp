#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "tests/system/fault_scene.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

/// A moment of the work: before the n-th call of a name since the picture was first opened.
struct Stage {
  const char* name;
  const char* call;
  std::size_t nth;
};

// After the picture was first looked at, because what changes earlier is simply what is converted; and before
// the exchange, because what changes later comes after the conversion.
constexpr Stage kStages[] = {
    {"before it is opened to be read", "openat", 1},
    {"while it is decoded", "read", 0},
    {"once it is decoded", "mkdir", 0},
    {"before the new file is written", "fallocate", 0},
    {"before the last look at it", "fsync", 0},
    {"before the exchange", "renameat2", 0},
};

/// What somebody else does to the picture.
struct Change {
  const char* name;
  std::function<bool(const std::string& path)> make;
};

bool edit(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  const bool edited = pwrite(file, "edited", 6, 100) == 6;
  return close(file) == 0 && edited;
}

bool replace(const std::string& path) {
  writeFile(path + ".new", "another picture");
  return rename((path + ".new").c_str(), path.c_str()) == 0;
}

const Change kChanges[] = {
    {"edited", edit},
    {"replaced", replace},
    {"deleted", [](const std::string& path) { return unlink(path.c_str()) == 0; }},
    {"truncated", [](const std::string& path) { return truncate(path.c_str(), 10) == 0; }},
    {"given another mode", [](const std::string& path) { return chmod(path.c_str(), 0600) == 0; }},
    {"tagged", [](const std::string& path) { return setxattr(path.c_str(), "user.tags", "sea", 3, 0) == 0; }},
    {"stripped of a tag",
     [](const std::string& path) { return removexattr(path.c_str(), "user.ostra.test") == 0; }},
};

class Changes : public testing::TestWithParam<Road> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    if (!canInjectFaults()) GTEST_SKIP() << "this machine does not let a test stop another program";
    scene_ = std::make_unique<FaultScene>(GetParam(), fs::temp_directory_path().string());
  }

  void expectTheChangeWins(const Stage& stage, const Change& change) {
    SCOPED_TRACE(std::string(change.name) + " " + stage.name);
    scene_->prepare();
    bool changed = false;
    std::optional<FileState> theirs;
    Injection injection;
    injection.fault = Fault{};
    injection.fault->kind = Fault::Kind::pause;
    injection.fault->call = stage.call;
    injection.fault->at = stage.nth;
    injection.fault->meanwhile = [&](pid_t) {
      changed = change.make(scene_->destination());
      theirs = fileStateAt(scene_->destination());
    };
    const FaultedRun run = scene_->run(injection);
    ASSERT_TRUE(run.struck && changed);
    const auto now = fileStateAt(scene_->destination());
    EXPECT_TRUE(now == theirs) << differenceOf(now, theirs);
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.errors, "");
  }

  std::unique_ptr<FaultScene> scene_;
};

TEST_P(Changes, OfAnotherProgramWinAtEveryStageAndAreTold) {
  for (const Stage& stage : kStages) {
    for (const Change& change : kChanges) expectTheChangeWins(stage, change);
  }
}

INSTANTIATE_TEST_SUITE_P(Roads, Changes, testing::Values(kRoads[0], kRoads[1], kRoads[5]),
                         [](const testing::TestParamInfo<Road>& road) { return testNameOf(road.param); });

}  // namespace

}  // namespace ostra::test
