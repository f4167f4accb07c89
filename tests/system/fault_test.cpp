#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <memory>
#include <ostream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSurplus = 20000;
constexpr char kTag[] = "user.ostra.test";

/// One way of a picture through the program: what it starts from and what it makes.
struct Road {
  const char* name;
  const char* action;
  const char* source;       // the picture that is given
  const char* destination;  // the file that is written
  bool destinationExists;
};

void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

constexpr Road kInPlace = {"in place", "invert", "a.png", "a.png", true};
constexpr Road kNewSibling = {"a new sibling", "srgb-jpg", "a.png", "a.jpg", false};
constexpr Road kOldSibling = {"an existing sibling", "srgb-jpg", "a.png", "a.jpg", true};
constexpr Road kDisguised = {"a sibling that is the picture itself", "jpg", "x.jpg", "x.jpg", true};

class Faults : public testing::TestWithParam<Road> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    if (!canInjectFaults()) GTEST_SKIP() << "this machine does not let a test change another program's calls";
    prepare();
    // The first run of a user does what later ones need not, such as making the cache folder.
    ASSERT_EQ(runWith(std::nullopt).status, 0);
    prepare();
    old_ = contents();
    const FaultedRun clean = runWith(std::nullopt);
    ASSERT_EQ(clean.status, 0) << clean.errors;
    new_ = contents();
    calls_ = clean.calls;
    ASSERT_NE(old_, new_);
  }

  struct Contents {
    Bytes source, destination;
    bool operator==(const Contents&) const = default;
  };

  const Road& road() const { return GetParam(); }
  std::string source() const { return folder_->path(road().source); }
  std::string destination() const { return folder_->path(road().destination); }

  // A fresh folder with the pictures of the road, marked with what must be kept.
  void prepare() {
    folder_ = std::make_unique<TemporaryFolder>();
    if (picture_.empty()) {
      makePicture("PNG:" + source(), {"-resize", "40x30!"});
      picture_ = readFile(source());
      // Larger than what replaces it, so that a file that is overwritten is neither old nor new for a while.
      picture_.resize(picture_.size() + kSurplus, 'x');
    }
    writeFile(source(), picture_);
    if (road().destinationExists && source() != destination()) writeFile(destination(), Bytes(kSurplus, 'o'));
    for (const std::string& path : {source(), destination()}) {
      if (!fs::exists(path)) continue;
      ASSERT_EQ(chmod(path.c_str(), 0640), 0);
      ASSERT_TRUE(setxattr(path.c_str(), kTag, "kept", 4, 0) == 0 || errno == ENOTSUP);
    }
  }

  FaultedRun runWith(const std::optional<Fault>& fault) const {
    return program_.runWithFault({road().action, source()}, "/" + std::string(road().source), fault);
  }

  Contents contents() const {
    return {fs::exists(source()) ? readFile(source()) : Bytes(),
            fs::exists(destination()) ? readFile(destination()) : Bytes()};
  }

  // Every picture is the old or the new one, with its attributes. `status` is the program's, if it lived to
  // tell.
  void expectWhole(const std::string& after, std::optional<int> status) const {
    const Contents now = contents();
    const bool killedPlainWrite = !status && !road().destinationExists;  // the documented exception
    if (source() != destination()) {
      EXPECT_EQ(now.source, old_.source) << after;
    }
    EXPECT_TRUE(now.destination == old_.destination || now.destination == new_.destination ||
                killedPlainWrite)
        << after << ": " << road().destination << " is neither old nor new";
    if (status) {
      EXPECT_TRUE(*status == 0 || *status == 1) << after << ": status " << *status;
      // Success means the new picture; failure the old one, or a new one that could not be made durable.
      EXPECT_TRUE(*status != 0 || now.destination == new_.destination)
          << after << ": success, but the old picture";
    }
    expectAttributes(after, source());
    if (road().destinationExists) expectAttributes(after, destination());
  }

  static void expectAttributes(const std::string& after, const std::string& path) {
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0) << after << ": " << path << " is gone";
    EXPECT_EQ(status.st_mode & 07777, 0640u) << after;
    char value[8] = {};
    const ssize_t length = getxattr(path.c_str(), kTag, value, sizeof value);
    if (length < 0 && errno == ENOTSUP) return;
    EXPECT_EQ(std::string(value, length < 0 ? 0 : static_cast<std::size_t>(length)), "kept") << after;
  }

  std::size_t countOfCalls() const { return calls_.size(); }
  std::string describe(std::size_t call) const {
    return std::string(road().name) + ", call " + std::to_string(call) + " (" + calls_[call] + ")";
  }

 private:
  InstalledProgram program_;
  std::unique_ptr<TemporaryFolder> folder_;
  Bytes picture_;
  Contents old_, new_;
  std::vector<std::string> calls_;
};

TEST_P(Faults, ADeathAtAnyCallLeavesEveryPictureWhole) {
  for (std::size_t call = 0; call < countOfCalls(); ++call) {
    prepare();
    const FaultedRun run = runWith(Fault{call, std::nullopt});
    ASSERT_EQ(run.status, 128 + SIGKILL) << describe(call);
    expectWhole("killed at " + describe(call), std::nullopt);
  }
  RecordProperty("points", static_cast<int>(countOfCalls()));
}

TEST_P(Faults, AnErrorFromAnyCallLeavesEveryPictureWholeAndTheStatusTrue) {
  for (const int error : {EIO, ENOSPC, EPERM, EINTR}) {
    for (std::size_t call = 0; call < countOfCalls(); ++call) {
      prepare();
      const FaultedRun run = runWith(Fault{call, error});
      expectWhole(std::string(strerror(error)) + " at " + describe(call), run.status);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Roads, Faults, testing::Values(kInPlace, kNewSibling, kOldSibling, kDisguised),
                         [](const testing::TestParamInfo<Road>& road) {
                           std::string name = road.param.name;
                           for (char& c : name) {
                             if (c == ' ') c = '_';
                           }
                           return name;
                         });

}  // namespace
}  // namespace ostra::test
