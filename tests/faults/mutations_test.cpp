#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/faults/mutation_matrix.h"
#include "tests/faults/picture_parts.h"
#include "tests/support/temporary_folder.h"
#include "tests/system/pictures.h"

// A slice of what script/faults does with many more, and a look at whether it would notice: stand-ins for the
// program do what must never happen.

namespace ostra::test {
namespace {

SourcePictures fewPictures() {
  const TemporaryFolder folder;
  std::vector<SourcePictures::Picture> pictures;
  for (const char* name : {"a.png", "b.jpg"}) {
    makePicture(folder.path(name));
    pictures.push_back({name, readFile(folder.path(name))});
  }
  return {"made for a test", std::move(pictures)};
}

class Mutations : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"convert", "exiftool", "djpeg", "pngcheck"}) OSTRA_NEEDS_PROGRAM(name);
  }
  MutationPlan plan(std::size_t count) const {
    MutationPlan plan;
    plan.count = count;
    plan.shown = 20;
    plan.folder = folder_.path();
    plan.cache = folder_.path("cache");
    plan.environment = {"XDG_CACHE_HOME=" + plan.cache};
    plan.findings = folder_.path("findings");
    return plan;
  }
  bool isAnyFound() const { return std::filesystem::exists(folder_.path("findings")); }

  /// Of a shell script in place of the program, asked for 20 files. It knows the `files` of the request, one
  /// `victim` and its `name`, how to `refuse` files and how to `list` them as failed in the end.
  MutationTally tallyOf(const std::string& script) const {
    const std::string path = folder_.path("stand-in");
    writeFile(path, R"sh(#!/bin/bash
      mapfile -d '' files <"${3#*=}"
      say() { echo "$1" >&2; }
      refuse() { for file; do [ "$file" = "" ] || say "invert: ${file##*/}: no."; done; }
      list() { for file; do [ "$file" = "" ] || say "  ${file##*/}: no."; done; }
      for file in "${files[@]}"; do case ${file##*/} in 7 | 7.*) victim=$file ;; esac; done
      name=${victim##*/} folder=${files[0]%/*} others=("${files[@]/#"$victim"/}"))sh" +
                        script);
    std::filesystem::permissions(path, std::filesystem::perms(0755));
    MutationPlan standIn = plan(20);
    standIn.program = path;
    standIn.kinds = {"invert"};
    standIn.patience = std::chrono::seconds(2);
    return runMutations(standIn, fewPictures()).front();
  }

  // In memory where there is such a place: every conversion waits for the disk.
  TemporaryFolder folder_{access("/dev/shm", W_OK) == 0 ? "/dev/shm"
                                                        : std::filesystem::temp_directory_path().string()};
};

TEST_F(Mutations, CostNoPictureAndNeverTheProgram) {
  const InstalledProgram program(folder_.path("home"));
  program.installModules();
  MutationPlan slice = plan(150);
  slice.program = program.path();
  slice.environment = program.environment();
  slice.cache = program.home() + "/cache";
  for (const MutationTally& tally : runMutations(slice, SourcePictures::made(folder_.path()))) {
    EXPECT_EQ(tally.failures(), 0U) << tally.kind;
    EXPECT_EQ(tally.mutations, 150U);
    EXPECT_EQ(tally.converted + tally.refused, 150U);
    EXPECT_GT(tally.converted, 15U);
    EXPECT_GT(tally.refused, 15U);
    EXPECT_GT(tally.opened, 5U);
  }
}

TEST_F(Mutations, AreTheSameForTheSameSeedAndIndex) {
  const SourcePictures pictures = fewPictures();
  const Mutation once = mutationOf(pictures, 5, 77), again = mutationOf(fewPictures(), 5, 77);
  EXPECT_EQ(once.bytes, again.bytes);
  EXPECT_EQ(once.name, again.name);
  EXPECT_EQ(once.story, again.story);
  EXPECT_NE(once.bytes, mutationOf(pictures, 5, 78).bytes);
  EXPECT_NE(once.bytes, mutationOf(pictures, 6, 77).bytes);
}

TEST_F(Mutations, ArePartsThatMakeTheWholeAgain) {
  const SourcePictures pictures = fewPictures();
  for (std::size_t index = 0; index < 200; ++index) {
    const Mutation mutation = mutationOf(pictures, 9, index);
    ASSERT_EQ(putTogether(cutApart(mutation.bytes)), mutation.bytes) << mutation.story;
  }
}

TEST_F(Mutations, OfAProgramThatRefusesAllAreNoFailure) {
  const MutationTally tally = tallyOf(R"sh(
    refuse "${files[@]}"; list "${files[@]}"; exit 1)sh");
  EXPECT_EQ(tally.failures(), 0U);
  EXPECT_EQ(tally.refused, 20U);
  EXPECT_FALSE(isAnyFound());
}

/// What a program must never do to one of 20 files, and the column where that is counted.
struct Misdeed {
  const char* name;
  const char* script;
  std::size_t MutationTally::*column;
};

void PrintTo(const Misdeed& misdeed, std::ostream* out) { *out << misdeed.name; }

class MisdeedsOfAProgram : public Mutations, public testing::WithParamInterface<Misdeed> {};

TEST_P(MisdeedsOfAProgram, AreCountedAndTheOtherFilesHaveTheirTurn) {
  const MutationTally tally = tallyOf(GetParam().script);
  EXPECT_EQ(tally.*GetParam().column, 1U);
  EXPECT_EQ(tally.failures(), 1U);
  EXPECT_EQ(tally.mutations, 20U);
}

INSTANTIATE_TEST_SUITE_P(Each, MisdeedsOfAProgram,
                         testing::Values(Misdeed{"Crash", R"sh(
          for file in "${files[@]}"; do [ "$file" = "$victim" ] && kill -SEGV $$; refuse "$file"; done
          list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::crashed},
                                         Misdeed{"WrongStatus", R"sh(
          for file in "${files[@]}"; do [ "$file" = "$victim" ] && exit 3; refuse "$file"; done
          list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::crashed},
                                         Misdeed{"Hang", R"sh(
          for file in "${files[@]}"; do [ "$file" = "$victim" ] && exec sleep 1000; refuse "$file"; done
          list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::hung},
                                         Misdeed{"CrashOfADecoder", R"sh(
          say "$name: not decoded, its decoder broke down."
          refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::crashed},
                                         Misdeed{"ForbiddenCall", R"sh(
          say "$name: not decoded, its decoder asked the system for something forbidden."
          refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::forbidden},
                                         Misdeed{"HalfAPicture", R"sh(
          for file in "${files[@]}"; do
            if [ "$file" = "$victim" ]; then
              printf '\x89PNG\r\n\x1a\n' >"$file"; say "invert: wrote $name (in place)"
            else refuse "$file"; fi
          done; list "${others[@]}"; exit 1)sh",
                                                 &MutationTally::lost},
                                         Misdeed{"ChangeOfARefusedPicture", R"sh(
          printf x >>"$victim"; refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::lost},
                                         Misdeed{"RemovalOfARefusedPicture", R"sh(
          rm "$victim"; refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::lost},
                                         Misdeed{"TraceInTheFolder", R"sh(
          touch "$folder/.trace"; refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::lost},
                                         Misdeed{"TraceInTheCache", R"sh(
          mkdir -p "$XDG_CACHE_HOME/.ostra-1-x"; refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::lost},
                                         Misdeed{"SiblingThatIsNotThere", R"sh(
          for file in "${files[@]}"; do
            if [ "$file" = "$victim" ]; then say "invert: wrote 7.none (sibling)"; else refuse "$file"; fi
          done; list "${others[@]}"; exit 1)sh",
                                                 &MutationTally::untrue},
                                         Misdeed{"SilentFailure", R"sh(
          refuse "${others[@]}"; list "${others[@]}"; exit 1)sh",
                                                 &MutationTally::untrue},
                                         Misdeed{"FailureThatIsNotListed", R"sh(
          refuse "${files[@]}"; list "${others[@]}"; exit 1)sh",
                                                 &MutationTally::untrue},
                                         Misdeed{"SuccessAfterFailures", R"sh(
          refuse "${files[@]}"; list "${files[@]}"; exit 0)sh",
                                                 &MutationTally::untrue},
                                         Misdeed{"ProcessLeftBehind", R"sh(
          sleep 1000 </dev/null >/dev/null 2>&1 &
          refuse "${files[@]}"; list "${files[@]}"; exit 1)sh",
                                                 &MutationTally::untrue}),
                         [](const testing::TestParamInfo<Misdeed>& misdeed) {
                           return std::string(misdeed.param.name);
                         });

TEST_F(Mutations, OfWhichOthersCannotOpenAResultAreKept) {
  // A signature and an end with the right checksum.
  const MutationTally tally = tallyOf(R"sh(
    for file in "${files[@]}"; do
      if [ "$file" = "$victim" ]; then
        printf '\x89PNG\r\n\x1a\n\0\0\0\0IEND\xae\x42\x60\x82' >"$file"; say "invert: wrote $name (in place)"
      else refuse "$file"; fi
    done; list "${others[@]}"; exit 1)sh");
  EXPECT_EQ(tally.lost, 0U);
  EXPECT_EQ(tally.drawn, 1U);
  EXPECT_EQ(tally.opened, 0U);
  EXPECT_TRUE(isAnyFound());
}

}  // namespace
}  // namespace ostra::test
