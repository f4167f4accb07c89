#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <stdexcept>

#include "tests/large/runs.h"
#include "tests/system/many_files.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

using Words = std::vector<std::string>;

constexpr std::size_t kMostMemory = 150'000'000;
// Less than a kilobyte for each of the files between the windows that are compared.
constexpr std::size_t kMemorySlack = 6 << 20;

struct Recipe {
  const char* name;
  std::size_t weight;
  const char* size;
  Words settings;
  Words tags;  // for exiftool
};

Words transparent(const char* depth) {
  return {"-depth", depth, "-alpha", "set", "-channel", "A", "-fx", "i/w"};
}
Words grayAndTransparent() {
  Words words = {"-colorspace", "Gray"};
  for (const std::string& word : transparent("8")) words.push_back(word);
  return words;
}

const Words kCamera = {"-EXIF:Make=Camera",
                       "-EXIF:Artist=Somebody",
                       "-EXIF:Orientation#=6",
                       "-EXIF:GPSLatitude=47.1",
                       "-XMP:Rating=4",
                       "-IPTC:Keywords=large",
                       "-EXIF:DateTimeOriginal=2020:02:20 20:20:20"};
const char* const kAdobe = "/usr/share/color/icc/colord/AdobeRGB1998.icc";

// Four fifths JPEG, as in people's folders; what takes long is rare.
const std::vector<Recipe> kRecipes = {
    {"plain.jpg", 9, "1224x816", {"-quality", "85"}, {}},
    {"camera.jpg", 7, "1280x960", {"-sampling-factor", "2x2", "-quality", "90"}, kCamera},
    {"large.jpg", 2, "2000x1500", {"-sampling-factor", "2x2", "-quality", "90"}, kCamera},
    {"progressive.jpg", 4, "1224x816", {"-interlace", "JPEG", "-quality", "90"}, kCamera},
    {"gray.jpg", 4, "1600x1200", {"-colorspace", "Gray", "-quality", "90"}, {}},
    {"adobe.jpg", 4, "1224x816", {"-quality", "95", "-profile", kAdobe}, kCamera},
    {"full-colour.jpg", 4, "1280x853", {"-sampling-factor", "1x1", "-quality", "96"}, {}},
    {"upright.jpg", 4, "816x1224", {"-quality", "90"}, kCamera},
    {"wide.jpg", 1, "2400x1000", {"-quality", "90"}, kCamera},
    {"ink.jpg", 1, "1224x816", {"-colorspace", "CMYK", "-quality", "90"}, {}},
    {"rgb8.png", 3, "1224x816", {"-depth", "8"}, {}},
    {"palette.png", 2, "1224x816", {"-colors", "200", "-define", "png:color-type=3"}, {}},
    {"rgba8.png", 1, "1224x816", transparent("8"), {}},
    {"rgb16.png", 1, "1224x816", {"-depth", "16"}, {}},
    {"rgba16.png", 1, "1224x816", transparent("16"), {}},
    {"gray16.png", 1, "1224x816", {"-colorspace", "Gray", "-depth", "16"}, {}},
    {"gray-alpha.png", 1, "1224x816", grayAndTransparent(), {}},
};

/// The names of the recipes, each as often as it weighs.
Words weighed() {
  Words names;
  for (const Recipe& recipe : kRecipes) names.insert(names.end(), recipe.weight, recipe.name);
  return names;
}

/// One picture of each recipe.
void makeOriginals(const TemporaryFolder& folder, unsigned seed) {
  for (const Recipe& recipe : kRecipes) {
    Words words = {"-size", recipe.size, "-seed", std::to_string(seed++), "plasma:tomato-steelblue"};
    words.insert(words.end(), recipe.settings.begin(), recipe.settings.end());
    words.push_back(folder.path(recipe.name));
    convert(words);
    if (recipe.tags.empty()) continue;
    Words tagging = {"exiftool", "-q", "-overwrite_original"};
    tagging.insert(tagging.end(), recipe.tags.begin(), recipe.tags.end());
    tagging.push_back(folder.path(recipe.name));
    if (const ProgramResult result = runProgram(tagging); result.status != 0)
      throw std::runtime_error("exiftool: " + result.errors);
  }
}

/// Copies in a seeded order, each of them a file of its own.
struct Copies {
  Copies(const std::string& parent, const TemporaryFolder& originals, std::size_t count, unsigned seed)
      : folder(parent) {
    std::mt19937 random(seed);
    Words names = weighed();
    for (std::size_t i = 0; i < count; ++i) {
      // Every window of so many files holds the same work.
      if (i % names.size() == 0) std::shuffle(names.begin(), names.end(), random);
      recipes.push_back(names[i % names.size()]);
      paths.push_back(folder.path(std::to_string(100000 + i) + "-" + recipes.back()));
      fs::copy_file(originals.path(recipes.back()), paths.back());
      bytes += fs::file_size(paths.back());
    }
  }
  TemporaryFolder folder;
  Words recipes, paths;
  std::size_t bytes = 0;
};

/// Whether every copy of a recipe became the same file, one that another program reads and that is not what
/// it was.
bool isAllConverted(const Copies& copies, const TemporaryFolder& originals) {
  std::map<std::string, Bytes> results;
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < copies.paths.size(); ++i) {
    const std::string& recipe = copies.recipes[i];
    const Bytes bytes = readFile(copies.paths[i]);
    const auto [found, first] = results.emplace(recipe, bytes);
    if (!first) {
      wrong += found->second != bytes ? 1 : 0;
      continue;
    }
    const std::string size = identify(originals.path(recipe), "%wx%h");
    const bool good = bytes != readFile(originals.path(recipe)) &&
                      identify(copies.paths[i], "%wx%h") == size &&
                      runProgram({"convert", copies.paths[i], "null:"}).errors.empty();
    if (!good) std::fprintf(stderr, "%s: not converted as it should be\n", recipe.c_str());
    wrong += good ? 0 : 1;
  }
  if (wrong != 0) std::fprintf(stderr, "%zu files are not as they should be\n", wrong);
  return wrong == 0;
}

void printHoldings(const ManyFilesRun& run, const char* action, std::size_t warmUp, std::size_t span) {
  for (const Holding& holding : holdings(kMemorySlack)) {
    const auto between = [&](std::size_t from, std::size_t to) {
      return mostBetween(run, holding, from, to);
    };
    const std::size_t all = run.filesDone;
    std::printf("%s\t%s\t%zu\t%zu\t%zu\t%zu\t%zu\n", action, holding.name, between(0, span),
                between(warmUp, warmUp + span), between(all / 2, all / 2 + span), between(all - span, all),
                between(0, all));
  }
}

bool judge(const std::string& folder, const TemporaryFolder& originals, const char* action, std::size_t count,
           unsigned seed) {
  const Copies copies(folder, originals, count, seed);
  const TemporaryFolder home(folder);
  const InstalledProgram program(home.path("home"));
  const std::size_t tenth = count / 10;
  const auto start = std::chrono::steady_clock::now();
  const ManyFilesRun run = convertManyFiles(program, action, copies.paths, std::chrono::milliseconds(200));
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const std::size_t most = run.most([](const Moment& at) { return at.program.mostResidentBytes; });
  printHoldings(run, action, tenth, tenth);
  std::printf("%s\tfiles\t%zu of %zu\t%zu MB\t%.0f s\t%zu samples\tpeak %zu MB\n", action, run.filesDone,
              count, copies.bytes / 1'000'000, seconds, run.moments.size(),
              std::max(most, run.result.peakMemory) / 1'000'000);
  std::fflush(stdout);

  // A tenth of a short request may lack the moments that take the most.
  const std::vector<std::string> grown = whatGrew(run, holdings(kMemorySlack), tenth, 4 * tenth);
  for (const std::string& sentence : grown) std::fprintf(stderr, "%s grew: %s\n", action, sentence.c_str());
  if (run.result.status != 0) std::fprintf(stderr, "%s: %s\n", action, run.result.errors.c_str());
  if (most >= kMostMemory) std::fprintf(stderr, "%s: more memory than allowed\n", action);
  return run.result.status == 0 && run.filesDone == count && grown.empty() && most > 0 &&
         most < kMostMemory && isAllConverted(copies, originals);
}

}  // namespace

bool runManyFiles(const std::string& folder, std::size_t count, unsigned seed) {
  const TemporaryFolder originals(folder);
  makeOriginals(originals, seed);
  const bool drawn = judge(folder, originals, "srgb", count, seed);
  return judge(folder, originals, "invert", std::max<std::size_t>(count / 10, 10), seed) && drawn;
}

}  // namespace ostra::test
