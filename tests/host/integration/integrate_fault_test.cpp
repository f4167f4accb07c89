#include <cerrno>
#include <csignal>
#include <filesystem>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/integration/home_folder.h"
#include "tests/support/fault_injector.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

const std::string kList = "<actions>\n<action><name>Mine</name></action>\n</actions>\n";

/// A home with a list of Thunar's and room for Dolphin's menu, whose program is disturbed.
class IntegrateFaults : public testing::Test {
 protected:
  void SetUp() override {
    if (!test::canInjectFaults())
      GTEST_SKIP() << "this machine does not let a test change another program's calls";
    for (const char* name : {"dolphin", "thunar"}) home_.install(name);
    prepare();
    before_ = home_.snapshot();
    const test::FaultedRun undisturbed = run({});
    ASSERT_EQ(undisturbed.status, 0) << undisturbed.errors;
    calls_ = undisturbed.calls;
    new_ = home_.read(list());
    ASSERT_GT(calls_.size(), 20U) << "the calls are not seen";
  }

  void prepare() {
    fs::remove_all(home_.home());
    home_.write(list(), kList);
    fs::create_directories(home_.home("/.local/share"));
  }
  std::string list() const { return home_.home("/.config/Thunar/uca.xml"); }

  test::FaultedRun run(const std::optional<test::Fault>& fault, const std::string& option = "") {
    test::Injection injection;
    // Read before anything is written, once it is known what there is to write.
    injection.armedBy = "thunar-action.in";
    injection.fault = fault;
    test::ProgramOptions options;
    options.environment = home_.environment();
    std::vector<std::string> words{OSTRA_PROGRAM, "integrate"};
    if (!option.empty()) words.push_back(option);
    return test::runWithFault(words, injection, options);
  }

  /// Whatever happened, the list is the old or the new one, and the entries go without a trace but a file
  /// under a passing name.
  void expectUndone(const std::string& after) {
    const std::string found = home_.read(list());
    EXPECT_TRUE(found == kList || found == new_) << after << ": " << found;
    ASSERT_EQ(run({}, "--remove").status, 0) << after;
    auto left = home_.snapshot();
    for (const auto& [path, state] : before_) {
      EXPECT_EQ(left[path], state) << after << ": " << path;
      left.erase(path);
    }
    const auto isStrayAt = [](const std::string& path) {
      return fs::path(path).filename().string().starts_with(".ostra-");
    };
    std::size_t strays = 0;
    for (const auto& [path, state] : left) strays += isStrayAt(path) ? 1 : 0;
    for (const auto& [path, state] : left) {
      const bool isStray = isStrayAt(path);
      // The folder of a stray stays with it.
      const bool isFolder = fs::is_directory(fs::path(home_.home()) / path);
      EXPECT_TRUE(isStray || (isFolder && strays > 0)) << after << ": " << path;
    }
    EXPECT_LE(strays, 1U) << after;
  }

  test::HomeFolder home_;
  std::map<std::string, std::string> before_;
  std::vector<std::string> calls_;
  std::string new_;
};

TEST_F(IntegrateFaults, ADeathAtAnyCallCanBeUndone) {
  std::size_t deaths = 0;
  for (std::size_t call = 0; call < calls_.size(); ++call) {
    prepare();
    test::Fault death;
    death.at = call;
    if (run(death).struck) ++deaths;
    expectUndone("killed at " + std::to_string(call) + " (" + calls_[call] + ")");
  }
  EXPECT_EQ(deaths, calls_.size());
}

TEST_F(IntegrateFaults, AnErrorFromAnyCallCanBeUndoneAndIsTold) {
  for (std::size_t call = 0; call < calls_.size(); ++call) {
    prepare();
    test::Fault fault;
    fault.kind = test::Fault::Kind::error;
    fault.error = EIO;
    fault.at = call;
    const test::FaultedRun ended = run(fault);
    const std::string after = "EIO at " + std::to_string(call) + " (" + calls_[call] + ")";
    const bool isWhole = home_.read(list()) == new_ &&
                         fs::exists(home_.home("/.local/share/kio/servicemenus/org.ostra.Ostra.desktop"));
    EXPECT_TRUE(isWhole || ended.status != 0) << after;
    expectUndone(after);
  }
}

// Before the new list is written, and before it takes the old one's place.
TEST_F(IntegrateFaults, AListThatSomebodyChangesMeanwhileStaysAsTheyLeftIt) {
  const std::string theirs = "<actions><action><name>Newer</name></action></actions>";
  for (const auto& [call, at] : {std::pair{"fallocate", 2}, std::pair{"renameat2", 0}}) {
    prepare();
    test::Fault pause;
    pause.kind = test::Fault::Kind::pause;
    pause.call = call;
    pause.at = static_cast<std::size_t>(at);
    bool listWasOld = false;
    pause.meanwhile = [&](pid_t) {
      listWasOld = home_.read(list()) == kList;
      home_.write(list(), theirs);
    };
    const test::FaultedRun ended = run(pause);
    ASSERT_TRUE(ended.struck && listWasOld) << call;
    EXPECT_EQ(ended.status, 1) << call;
    EXPECT_NE(ended.errors.find("uca.xml"), std::string::npos) << ended.errors;
    EXPECT_EQ(home_.read(list()), theirs) << call;
  }
}

}  // namespace
}  // namespace ostra
