#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <random>
#include <sstream>
#include <thread>

#include "tests/faults/matrices.h"
#include "tests/faults/tally.h"
#include "tests/system/file_state.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 500;
constexpr int kInstances = 4;

std::string nameOf(int file) { return std::to_string(1000 + file) + ".png"; }

/// 500 copies of a picture, and what it becomes when it is converted once, twice and so on.
class Crowd {
 public:
  explicit Crowd(const std::string& parent) : folder_(parent), home_(parent), program_(home_.path()) {
    const TemporaryFolder workshop(parent);
    const std::string picture = workshop.path("a.png");
    makePicture(picture, {"-resize", "24x16!"});
    for (int file = 0; file < kFiles; ++file) {
      fs::copy_file(picture, path(file));
      markFile(path(file));
    }
    markFile(picture);
    for (int times = 0; times <= kInstances; ++times) {
      states_.push_back(*fileStateAt(picture));
      program_.run({"invert", picture});
    }
  }

  /// In the same order they meet at every file, in orders of their own at some.
  void convert(std::mt19937& random, bool sameOrder) {
    std::mt19937 same = random;
    std::array<std::thread, kInstances> threads;
    for (int instance = 0; instance < kInstances; ++instance) {
      if (sameOrder) random = same;
      const std::string list = listOfAll(random);
      threads[static_cast<std::size_t>(instance)] = std::thread([this, instance, list] {
        ProgramOptions options;
        options.input = list;
        results_[static_cast<std::size_t>(instance)] = program_.run({"--files-from=-", "invert"}, options);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }

  void judge(Tally& tally) const {
    const std::map<std::string, int> failures = failuresOfFiles();
    int reported = 0;
    for (int file = 0; file < kFiles; ++file) {
      const auto found = failures.find(nameOf(file));
      const int failed = found == failures.end() ? 0 : found->second;
      reported += failed;
      judgeFile(file, kInstances - failed, tally);
    }
    for (const ProgramResult& result : results_) {
      if (result.status != 0 && result.status != 1)
        tally.untrue("an instance", "status " + std::to_string(result.status));
    }
    judgeStrays(reported, tally);
    std::fprintf(stderr, "instances: %d of %d conversions reported as failed\n", reported,
                 kFiles * kInstances);
  }

 private:
  std::string path(int file) const { return folder_.path(nameOf(file)); }

  std::string listOfAll(std::mt19937& random) const {
    std::vector<int> order(kFiles);
    for (int file = 0; file < kFiles; ++file) order[static_cast<std::size_t>(file)] = file;
    std::shuffle(order.begin(), order.end(), random);
    std::string list;
    for (const int file : order) list += path(file) + '\0';
    return list;
  }

  // How many instances told of a failure of each file.
  std::map<std::string, int> failuresOfFiles() const {
    std::map<std::string, int> failures;
    for (const ProgramResult& result : results_) {
      std::istringstream lines(result.errors);
      for (std::string line; std::getline(lines, line);) {
        const std::size_t name = line.find(".png: ");
        if (name != std::string::npos && name >= 4) ++failures[line.substr(name - 4, 8)];
      }
    }
    return failures;
  }

  void judgeFile(int file, int successes, Tally& tally) const {
    tally.count();
    const auto now = fileStateAt(path(file));
    const auto known = [&](const FileState& state) { return now == state; };
    if (std::none_of(states_.begin(), states_.end(), known)) {
      tally.lost(nameOf(file), "none of its versions, " + differenceOf(now, states_[0]));
    } else if (now != states_[static_cast<std::size_t>(successes)]) {
      tally.untrue(nameOf(file), "not what " + std::to_string(successes) + " conversions make of it");
    }
    if (now != states_[0]) tally.countNew();
  }

  void judgeStrays(int reported, Tally& tally) const {
    int left = 0;
    for (const std::string& folder : {folder_.path(), home_.path() + "/cache"}) {
      for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
        const std::string name = entry->path().filename();
        if (name.starts_with(".ostra-")) {
          ++left;
          entry.disable_recursion_pending();
        } else if (folder == folder_.path() && name.size() != nameOf(0).size()) {
          tally.untrue(name, "was left");
        }
      }
    }
    tally.countStrays(left);
    if (left > reported) tally.untrue("the folders", "more was left than failures were told");
  }

  TemporaryFolder folder_, home_;
  InstalledProgram program_;
  std::vector<FileState> states_;
  std::array<ProgramResult, kInstances> results_;
};

}  // namespace

bool runInstances(const std::string& folder, unsigned seed) {
  Tally tally("instances", "in-place");
  std::mt19937 random(seed);
  for (const bool sameOrder : {false, true}) {
    Crowd crowd(folder);
    crowd.convert(random, sameOrder);
    crowd.judge(tally);
  }
  tally.print();
  return tally.isGood();
}

}  // namespace ostra::test
