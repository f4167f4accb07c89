#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include "platform/foundation/unique_fd.h"
#include "tests/support/failing_memory.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

namespace fs = std::filesystem;

/// A way of a small picture through the program.
struct Road {
  const char* name;
  std::vector<std::string> action;
  const char* source;
  std::vector<std::string> settings;
  bool everyCall;  // rather than some, where no full run is asked for
};

void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

enum class Where : std::uint64_t { program = 0, decoder = 1 };

bool isFullRun() {
  const char* value = std::getenv("OSTRA_TEST_EVERY_ALLOCATION");
  return value != nullptr && std::strcmp(value, "1") == 0;
}

/// What the program and the library in it count in.
class SharedCount {
 public:
  explicit SharedCount(const std::string& path)
      : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (ftruncate(file_.get(), sizeof(MemoryCount)) != 0) throw std::runtime_error("no file to count in");
    void* memory = mmap(nullptr, sizeof(MemoryCount), PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no memory to count in");
    count_ = new (memory) MemoryCount;
  }
  ~SharedCount() { munmap(count_, sizeof(MemoryCount)); }
  SharedCount(const SharedCount&) = delete;
  SharedCount& operator=(const SharedCount&) = delete;

  void begin(Where where, std::uint64_t failing) {
    count_->calls = 0;
    count_->failing = failing;
    count_->inDecoder = static_cast<std::uint64_t>(where);
    count_->failed = 0;
  }
  std::uint64_t calls() const { return count_->calls; }
  bool failed() const { return count_->failed != 0; }

 private:
  UniqueFd file_;
  MemoryCount* count_;
};

class MemoryFaults : public testing::TestWithParam<std::tuple<Road, Where>> {
 protected:
  using Files = std::map<std::string, Bytes>;

  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
    program_.installModules();
    for (const std::string& word : road().settings) {
      if (word.starts_with('/') && !fs::exists(word)) GTEST_SKIP() << word << " is not installed";
    }
    makePicture(made_.path(road().source), road().settings);
    runProgram({"exiftool", "-q", "-m", "-overwrite_original", "-Artist=Ostra", "-XMP:Title=Hello",
                "-IPTC:City=Rome", made_.path(road().source)});
    // The first run of a user does what later ones need not.
    ASSERT_EQ(convertWith(0).status, 0);
    const ProgramResult clean = convertWith(0);
    ASSERT_EQ(clean.status, 0) << clean.errors;
    right_ = files();
    seen_ = whatIsSeen();
    calls_ = count_.calls();
    ASSERT_GT(calls_, 50u);
  }

  const Road& road() const { return std::get<Road>(GetParam()); }

  ProgramResult convertWith(std::uint64_t failing) {
    for (const auto& [name, bytes] : files()) fs::remove(folder_.path(name));
    fs::copy_file(made_.path(road().source), folder_.path(road().source));
    count_.begin(std::get<Where>(GetParam()), failing);
    std::vector<std::string> words = road().action;
    words.insert(words.end(), {"--ui=none", folder_.path(road().source)});
    ProgramOptions options;
    options.environment = {"LD_PRELOAD=" OSTRA_FAILING_MEMORY, "OSTRA_TEST_MEMORY=" + shared_.path("count"),
                           "OSTRA_TEST_PICTURE=/" + std::string(road().source)};
    return program_.run(words, options);
  }

  Files files() const {
    Files all;
    for (const std::string& name : folder_.names()) {
      if (fs::is_regular_file(folder_.path(name))) all[name] = readFile(folder_.path(name));
    }
    return all;
  }

  /// Of every file the pixels and tags. A library that lacks memory may find other words for the same
  /// picture.
  std::string whatIsSeen() const {
    std::string seen;
    for (const auto& [name, bytes] : files()) {
      seen += name + "\n" + runProgram({"convert", folder_.path(name), "-depth", "16", "rgba:-"}).output;
      seen += runProgram({"exiftool", "-a", "-G1", "-s", "--System:all", "--MediaDataOffset",
                          "--MediaDataSize", folder_.path(name)})
                  .output;
    }
    return seen;
  }

  /// The picture converted as ever, or one failure and the picture as it was.
  void expectRight(std::uint64_t call, const ProgramResult& result) const {
    const Files now = files();
    const Files untouched = {{road().source, readFile(made_.path(road().source))}};
    EXPECT_TRUE(result.status == 0 || result.status == 1)
        << "allocation " << call << ": status " << result.status << ", " << result.errors;
    if (result.status == 0) {
      if (now == right_) return;
      EXPECT_EQ(whatIsSeen(), seen_) << "allocation " << call << ": success, and not the right picture";
    } else {
      EXPECT_EQ(now, untouched) << "allocation " << call << ": " << result.errors;
    }
  }

  void failEach(std::uint64_t first, std::uint64_t step) {
    std::uint64_t reached = 0, refused = 0;
    for (std::uint64_t call = first; call <= calls_; call += step) {
      const ProgramResult result = convertWith(call);
      if (!count_.failed()) continue;  // another thread was faster than the last time
      ++reached;
      refused += result.status == 1 ? 1 : 0;
      expectRight(call, result);
    }
    RecordProperty("allocations", static_cast<int>(calls_));
    RecordProperty("failed", static_cast<int>(reached));
    RecordProperty("refused", static_cast<int>(refused));
    EXPECT_GT(refused, 0u);
  }

  std::uint64_t calls() const { return calls_; }

 private:
  TemporaryFolder shared_, made_, folder_;
  SharedCount count_{shared_.path("count")};
  InstalledProgram program_;
  Files right_;
  std::string seen_;
  std::uint64_t calls_ = 0;
};

TEST_P(MemoryFaults, AreOneFailureAndNeverAWrongPicture) {
  constexpr std::uint64_t kSome = 24;
  const std::uint64_t step =
      isFullRun() || road().everyCall ? 1 : std::max<std::uint64_t>(1, calls() / kSome);
  failEach(1 + step / 2, step);
}

const std::vector<std::string> kSmall = {"-resize", "16x12!"};

INSTANTIATE_TEST_SUITE_P(
    Each, MemoryFaults,
    testing::Combine(
        testing::Values(
            Road{"Invert", {"invert"}, "a.jpg", kSmall, true},
            Road{"Grayscale", {"grayscale"}, "a.png", kSmall, false},
            Road{"GrayscaleJpeg", {"grayscale-jpg"}, "a.png", kSmall, false},
            Road{"Srgb",
                 {"srgb"},
                 "a.png",
                 {"-resize", "16x12!", "-profile", "/usr/share/color/icc/compatibleWithAdobeRGB1998.icc"},
                 false},
            Road{"SrgbJpeg", {"srgb-jpg"}, "a.png", kSmall, false},
            Road{"Jpeg",
                 {"jpg"},
                 "a.png",
                 {"-resize", "16x12!", "-alpha", "set", "-channel", "A", "-evaluate", "multiply", "0.5"},
                 false},
            Road{"Ink", {"srgb"}, "a.jpg", {"-resize", "16x12!", "-colorspace", "CMYK"}, false},
            Road{"TaggedInk",
                 {"srgb"},
                 "a.jpg",
                 {"-resize", "16x12!", "-colorspace", "CMYK", "-profile",
                  "/usr/share/color/icc/ghostscript/default_cmyk.icc"},
                 false},
            Road{"Profile",
                 {"convert-color-profile", "--profile", "Adobe RGB (1998)"},
                 "a.jpg",
                 kSmall,
                 false},
            Road{"Gif", {"invert"}, "a.gif", kSmall, false}, Road{"Tiff", {"invert"}, "a.tif", kSmall, false},
            Road{"Jpeg2000", {"invert"}, "a.jp2", kSmall, false},
            Road{"Heic", {"invert"}, "a.heic", {"-resize", "32x24!"}, false},
            Road{"Avif", {"invert"}, "a.avif", {"-resize", "32x24!"}, false},
            Road{"WebP", {"invert"}, "a.webp", kSmall, false}),
        testing::Values(Where::program, Where::decoder)),
    [](const testing::TestParamInfo<std::tuple<Road, Where>>& test) {
      return std::string(std::get<Road>(test.param).name) +
             (std::get<Where>(test.param) == Where::program ? "InTheProgram" : "InItsDecoder");
    });

}  // namespace
}  // namespace ostra::test
