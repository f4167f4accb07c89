#include "tests/system/many_files.h"

#include <algorithm>
#include <filesystem>

#include <sys/stat.h>

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

ino_t fileAt(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

std::size_t entriesIn(const std::string& folder) {
  const fs::directory_iterator entries(folder);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t entriesBelow(const std::string& folder) {
  std::size_t count = 0;
  std::error_code gone;
  for (fs::recursive_directory_iterator entry(folder, gone), end; !gone && entry != end;
       entry.increment(gone))
    ++count;
  return count;
}

/// How many of the files, converted in their order, are others than they were.
class Progress {
 public:
  explicit Progress(const std::vector<std::string>& paths) : paths_(paths) {
    for (const std::string& path : paths) before_.push_back(fileAt(path));
  }
  std::size_t done() {
    while (done_ < paths_.size() && fileAt(paths_[done_]) != before_[done_]) ++done_;
    return done_;
  }

 private:
  const std::vector<std::string>& paths_;
  std::vector<ino_t> before_;
  std::size_t done_ = 0;
};

}  // namespace

std::size_t ManyFilesRun::most(std::size_t (*of)(const Moment&)) const {
  std::size_t most = 0;
  for (const Moment& moment : moments) most = std::max(most, of(moment));
  return most;
}

ManyFilesRun convertManyFiles(const InstalledProgram& program, const std::string& action,
                              const std::vector<std::string>& paths, std::chrono::milliseconds pause) {
  const std::string pictures = fs::path(paths.front()).parent_path();
  const TemporaryFolder temporary(program.home()), runtime(program.home());
  ManyFilesRun run;
  Progress progress(paths);
  ProgramOptions options;
  for (const std::string& path : paths) options.input += path + '\0';
  options.environment = {"TMPDIR=" + temporary.path(), "XDG_RUNTIME_DIR=" + runtime.path()};
  options.pause = pause;
  options.watch = [&](pid_t process) {
    run.moments.push_back({progress.done(), ProcessTree(process), memoryOfTree(process),
                           entriesBelow(program.home()) + entriesIn(pictures)});
  };
  run.result = program.run({"--files-from=-", action}, options);
  run.filesDone = progress.done();
  return run;
}

std::vector<Holding> holdings(std::size_t memorySlack) {
  return {
      {"memory", [](const Moment& at) { return at.program.residentBytes; }, memorySlack},
      {"of all", [](const Moment& at) { return at.memoryOfAll; }, 2 * memorySlack},
      {"descriptors", [](const Moment& at) { return at.program.descriptors; }, 2},
      {"threads", [](const Moment& at) { return at.program.threads; }, 1},
      {"mappings", [](const Moment& at) { return at.program.mappings; }, 8},
      {"processes", [](const Moment& at) { return at.program.processes; }, 1},
      {"zombies", [](const Moment& at) { return at.program.zombies; }, 1},
      {"entries", [](const Moment& at) { return at.entriesBeside; }, 3},
  };
}

std::size_t mostBetween(const ManyFilesRun& run, const Holding& holding, std::size_t from, std::size_t to) {
  std::size_t most = 0;
  for (const Moment& moment : run.moments)
    if (moment.filesDone >= from && moment.filesDone < to) most = std::max(most, holding.of(moment));
  return most;
}

std::vector<std::string> whatGrew(const ManyFilesRun& run, const std::vector<Holding>& holdings,
                                  std::size_t warmUp, std::size_t span) {
  std::vector<std::string> sentences;
  for (const Holding& holding : holdings) {
    const std::size_t early = mostBetween(run, holding, warmUp, warmUp + span);
    const std::size_t late = mostBetween(run, holding, run.filesDone - span, run.filesDone);
    if (late > early + holding.slack)
      sentences.push_back(std::string(holding.name) + ": " + std::to_string(early) + " early, " +
                          std::to_string(late) + " late");
  }
  return sentences;
}

}  // namespace ostra::test
