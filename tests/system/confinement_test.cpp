#include <algorithm>
#include <filesystem>
#include <ostream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using testing::HasSubstr;

/// A kernel that lacks something, and how the program calls that.
struct Kernel {
  const char* name;
  std::vector<std::string> lacks;
  const char* missing;
};

void PrintTo(const Kernel& kernel, std::ostream* out) { *out << kernel.name; }

class PoorerKernels : public testing::TestWithParam<Kernel> {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    for (const char* name : {"a.png", "b.jpg", "c.png"}) makePicture(folder_.path(name));
  }

  ProgramResult invert(const std::vector<std::string>& lacks,
                       std::vector<std::string> environment = {}) const {
    std::vector<std::string> words = {OSTRA_POORER_KERNEL};
    words.insert(words.end(), lacks.begin(), lacks.end());
    words.insert(words.end(), {"--", program_.path(), "--ui=none", "invert"});
    for (const std::string& name : folder_.names()) words.push_back(folder_.path(name));
    ProgramOptions options;
    options.environment = program_.environment();
    options.environment.insert(options.environment.end(), environment.begin(), environment.end());
    return runProgram(words, options);
  }

  /// Everything that a change of a file would change.
  std::vector<std::string> state() const {
    std::vector<std::string> all;
    for (const std::string& name : folder_.names()) {
      struct stat status {};
      EXPECT_EQ(lstat(folder_.path(name).c_str(), &status), 0);
      all.push_back(name + " " + std::to_string(status.st_ino) + " " + std::to_string(status.st_size) + " " +
                    std::to_string(status.st_ctim.tv_sec) + "." + std::to_string(status.st_ctim.tv_nsec));
    }
    return all;
  }

  InstalledProgram program_;
  TemporaryFolder folder_;
};

TEST_P(PoorerKernels, AreToldOfOnceAndConvertAllTheSame) {
  const auto before = samples8(folder_.path("a.png"), "RGB");
  const ProgramResult result = invert(GetParam().lacks);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors,
            "ostra: Pictures are decoded with less confinement than there could be: this kernel has " +
                std::string(GetParam().missing) + ".\n");
  const auto after = samples8(folder_.path("a.png"), "RGB");
  ASSERT_EQ(after.size(), before.size());
  for (std::size_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i], 255 - before[i]);
}

TEST_P(PoorerKernels, TouchNoFileWhereConfinementIsRequired) {
  const auto before = state();
  const ProgramResult result = invert(GetParam().lacks, {"OSTRA_REQUIRE_CONFINEMENT=1"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("OSTRA_REQUIRE_CONFINEMENT"));
  EXPECT_THAT(result.errors, HasSubstr(GetParam().missing));
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(state(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Without, PoorerKernels,
    testing::Values(Kernel{"Landlock", {"landlock=ENOSYS"}, "no Landlock"},
                    Kernel{"LandlockSwitchedOn", {"landlock=EOPNOTSUPP"}, "no Landlock"},
                    Kernel{"LandlockOfUse", {"landlock-use=ENOSYS"}, "no Landlock"},
                    Kernel{"Seccomp", {"seccomp=EINVAL"}, "no seccomp"},
                    Kernel{"SeccompFilters", {"seccomp-use=EINVAL"}, "no seccomp"},
                    Kernel{"Both", {"landlock=ENOSYS", "seccomp=ENOSYS"}, "neither Landlock nor seccomp"}),
    [](const testing::TestParamInfo<Kernel>& kernel) { return std::string(kernel.param.name); });

TEST_F(PoorerKernels, OfWhichNoneIsThisOneSayNothing) {
  const ProgramResult result = invert({}, {"OSTRA_REQUIRE_CONFINEMENT=1"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

}  // namespace
}  // namespace ostra::test
