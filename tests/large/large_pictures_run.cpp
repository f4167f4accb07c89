#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "tests/large/expected_rows.h"
#include "tests/large/runs.h"
#include "tests/support/process_tree.h"
#include "tests/system/installed_program.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

struct Run {
  const char* name;
  const char* action;
  const char* extension;
  LargePicture picture;
  // Bytes of a pixel as decoded and as drawn.
  std::size_t decoded, drawn;
  RowRule rule;
  std::uint32_t every;
  Deviation allowed;
};

constexpr std::size_t kBesides = 200'000'000;
constexpr double kOnlyMost = 65535;

// What is lossless may differ by nothing, a computed colour by a step, a lossy file by its quantisation.
const std::vector<Run> kRuns = {
    {"jpeg-500mp", "srgb", "jpg", {25000, 20000, 3, 8}, 4, 4, sameRow, 1, {64, 1.5}},
    {"png-500mp", "srgb", "png", {25000, 20000, 3, 8}, 4, 4, rowFromAdobe, 97, {1, kOnlyMost}},
    {"png-500mp-to-jpeg", "jpg", "png", {25000, 20000, 4, 8}, 4, 4, rowOnWhite, 1, {64, 1.5}},
    {"png-2gb", "srgb", "png", {18944, 18944, 3, 16, true}, 8, 8, sameRow, 1, {0, 0}},
    {"png-2gb-transparent", "srgb", "png", {16408, 16408, 4, 16, true}, 8, 8, sameRow, 1, {1, kOnlyMost}},
};

std::string megabytes(std::size_t bytes) { return std::to_string(bytes / 1'000'000); }

std::vector<std::uint8_t> profileOf(const Run& run) {
  return run.rule == rowFromAdobe ? readFile(kAdobeProfile) : std::vector<std::uint8_t>();
}

/// The files of one picture; gone at its end.
struct Files {
  explicit Files(const std::string& parent, const Run& run) : folder(parent) {
    source = folder.path("a." + std::string(run.extension));
    result = std::string(run.action) == "jpg" ? folder.path("a.jpg") : source;
    // A lossy picture is compared with what was in its file.
    if (std::string(run.extension) == "jpg") before = folder.path("before.jpg");
  }
  TemporaryFolder folder;
  std::string source, result, before;
};

void makeSource(const Run& run, const Files& files) {
  if (files.before.empty()) return writeLargePng(files.source, run.picture, profileOf(run));
  writeLargeJpeg(files.source, run.picture);
  fs::copy_file(files.source, files.before);
}

Deviation deviationOf(const Run& run, const Files& files) {
  DecodedRows result(files.result, run.picture.samples == 4);
  if (files.before.empty()) return deviationOf(result, run.picture, nullptr, run.rule, run.every);
  DecodedRows before(files.before, false);
  return deviationOf(result, run.picture, &before, run.rule, run.every);
}

bool isAcceptedByPngcheck(const std::string& path) {
  return fs::path(path).extension() != ".png" || runProgram({"pngcheck", "-q", path}).status == 0;
}

bool judge(const Run& run, const Files& files) {
  makeSource(run, files);
  const std::size_t sourceSize = fs::file_size(files.source);
  const InstalledProgram program(files.folder.path("home"));
  std::size_t sampled = 0;
  ProgramOptions options;
  options.watch = [&](pid_t process) { sampled = std::max(sampled, memoryOfTree(process)); };
  options.pause = std::chrono::milliseconds(50);
  const auto start = std::chrono::steady_clock::now();
  const ProgramResult result = program.run({run.action, files.source}, options);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (result.status != 0) throw std::runtime_error(result.errors);

  const std::size_t file = fs::file_size(files.result);
  const std::size_t allowed = run.picture.pixels() * (run.decoded + run.drawn) + file + kBesides;
  // The kernel's own record misses no moment, and knows one process only.
  const std::size_t peak = std::max(sampled, result.peakMemory);
  std::fprintf(stderr, "%s: %s MB of %s MB\n", run.name, megabytes(peak).c_str(), megabytes(allowed).c_str());
  const Deviation found = deviationOf(run, files);
  const bool whole = isAcceptedByPngcheck(files.result);
  std::printf("%s\t%s\t%ux%u\t%s\t%s\t%s\t%s\t%s\t%.0f\t%u\t%.3f\n", run.name, run.action, run.picture.width,
              run.picture.height, megabytes(sourceSize).c_str(), megabytes(file).c_str(),
              megabytes(sampled).c_str(), megabytes(result.peakMemory).c_str(), megabytes(allowed).c_str(),
              seconds, found.most, found.mean);
  std::fflush(stdout);
  if (peak > allowed) std::fprintf(stderr, "%s: more memory than allowed\n", run.name);
  if (!whole) std::fprintf(stderr, "%s: pngcheck finds errors\n", run.name);
  const bool right = found.most <= run.allowed.most && found.mean <= run.allowed.mean;
  if (!right) std::fprintf(stderr, "%s: the pixels are not what they should be\n", run.name);
  return peak <= allowed && whole && right;
}

}  // namespace

bool runLargePicture(const std::string& folder, const std::string& name, unsigned seed, unsigned divisor) {
  for (Run run : kRuns) {
    if (name != run.name) continue;
    run.picture.seed = seed;
    run.picture.width /= divisor;
    run.picture.height /= divisor;
    return judge(run, Files(folder, run));
  }
  throw std::runtime_error("no such picture");
}

std::vector<std::string> largePictureNames() {
  std::vector<std::string> names;
  names.reserve(kRuns.size());
  for (const Run& run : kRuns) names.emplace_back(run.name);
  return names;
}

}  // namespace ostra::test
