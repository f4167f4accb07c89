#include "platform/appkit/terminal/save_question.h"

#include <deque>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using test::TemporaryFolder;
using testing::HasSubstr;

/// Somebody who gives prepared answers and then no more.
struct Person {
  std::deque<std::string> answers;
  std::vector<std::string> heard;

  std::optional<std::string> answer(const std::string& question) {
    heard.push_back(question);
    if (answers.empty()) return std::nullopt;
    std::string next = answers.front();
    answers.pop_front();
    return next;
  }
};

class SaveQuestionTest : public testing::Test {
 protected:
  SaveQuestionTest() {
    panel_.setTitle("Save Converted Image");
    panel_.setMessage("Ostra is not allowed to write next to photo.webp.");
    panel_.setNameFieldStringValue("photo.png");
    panel_.setDirectoryURL(URL::fileURLWithPath(folder_.path()));
    panel_.setAllowedContentTypes({UTType::png()});
    panel_.setCanCreateDirectories(true);
  }

  /// The chosen path, or "cancelled".
  std::string choose(std::deque<std::string> answers) {
    person_ = {std::move(answers), {}};
    const auto url =
        askWhereToSave(panel_, [this](const std::string& question) { return person_.answer(question); });
    return url ? url->path() : "cancelled";
  }

  TemporaryFolder folder_;
  NSSavePanel panel_;
  Person person_;
};

TEST_F(SaveQuestionTest, ShowsTitleMessageAndProposal) {
  choose({});
  ASSERT_EQ(person_.heard.size(), 1u);
  EXPECT_EQ(person_.heard[0],
            "Save Converted Image\nOstra is not allowed to write next to photo.webp.\nSave as [" +
                folder_.path("photo.png") + "]: ");
}

TEST_F(SaveQuestionTest, AcceptsTheProposalByAnEmptyAnswer) {
  EXPECT_EQ(choose({""}), folder_.path("photo.png"));
}

TEST_F(SaveQuestionTest, IsCancelledWhereNoAnswerComes) { EXPECT_EQ(choose({}), "cancelled"); }

TEST_F(SaveQuestionTest, TakesAnotherFile) {
  EXPECT_EQ(choose({folder_.path("other.PNG")}), folder_.path("other.PNG"));
}

TEST_F(SaveQuestionTest, TakesTheProposedNameInAFolder) {
  std::filesystem::create_directory(folder_.path("sub"));
  EXPECT_EQ(choose({folder_.path("sub")}), folder_.path("sub/photo.png"));
  EXPECT_EQ(choose({folder_.path("sub/")}), folder_.path("sub/photo.png"));
}

TEST_F(SaveQuestionTest, CountsARelativeAnswerFromTheCurrentFolder) {
  EXPECT_EQ(choose({"ostra-not-there.png"}),
            std::filesystem::current_path().string() + "/ostra-not-there.png");
}

TEST_F(SaveQuestionTest, KnowsTheHomeFolder) {
  setenv("HOME", folder_.path().c_str(), 1);
  EXPECT_EQ(choose({"~/x.png"}), folder_.path("x.png"));
}

TEST_F(SaveQuestionTest, PutsTheAllowedExtensionBehindAnother) {
  EXPECT_EQ(choose({folder_.path("photo")}), folder_.path("photo.png"));
  EXPECT_EQ(choose({folder_.path("photo.tiff")}), folder_.path("photo.tiff.png"));
}

TEST_F(SaveQuestionTest, TakesAnyExtensionOfAnAllowedType) {
  panel_.setAllowedContentTypes({UTType::jpeg()});
  EXPECT_EQ(choose({folder_.path("photo.jpg")}), folder_.path("photo.jpg"));
  EXPECT_EQ(choose({folder_.path("photo.png")}), folder_.path("photo.png.jpeg"));
}

TEST_F(SaveQuestionTest, TakesAnyNameWhereNoTypeIsSet) {
  panel_.setAllowedContentTypes({});
  EXPECT_EQ(choose({folder_.path("photo.xyz")}), folder_.path("photo.xyz"));
}

TEST_F(SaveQuestionTest, ReplacesNothingWithoutAYes) {
  test::writeFile(folder_.path("photo.png"), "picture");
  EXPECT_EQ(choose({"", "n", folder_.path("b.png")}), folder_.path("b.png"));
  EXPECT_THAT(person_.heard[1], HasSubstr("“" + folder_.path("photo.png") + "” exists. Replace it?"));
  EXPECT_EQ(choose({"", "", folder_.path("b.png")}), folder_.path("b.png"));
  EXPECT_EQ(choose({"", "y"}), folder_.path("photo.png"));
  EXPECT_EQ(choose({""}), "cancelled");
}

TEST_F(SaveQuestionTest, WarnsBeforeReplacingALinkThatLeadsNowhere) {
  ASSERT_EQ(symlink("nowhere", folder_.path("photo.png").c_str()), 0);
  EXPECT_EQ(choose({""}), "cancelled");
  EXPECT_EQ(person_.heard.size(), 3u);
}

TEST_F(SaveQuestionTest, WarnsAboutTheNameWithTheExtensionThatWasAdded) {
  test::writeFile(folder_.path("photo.png"), "picture");
  EXPECT_EQ(choose({folder_.path("photo"), "n"}), "cancelled");
  EXPECT_THAT(person_.heard[1], HasSubstr("photo.png” exists"));
}

TEST_F(SaveQuestionTest, MakesAMissingFolderOnlyAfterAYes) {
  EXPECT_EQ(choose({folder_.path("new/x.png"), "n"}), "cancelled");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("new")));
  EXPECT_EQ(choose({folder_.path("new/x.png"), "y"}), folder_.path("new/x.png"));
  EXPECT_TRUE(std::filesystem::is_directory(folder_.path("new")));
}

TEST_F(SaveQuestionTest, MakesNoFolderWhereThePanelDoesNotAllowIt) {
  panel_.setCanCreateDirectories(false);
  EXPECT_EQ(choose({folder_.path("new/x.png"), folder_.path("y.png")}), folder_.path("y.png"));
  EXPECT_EQ(person_.heard.size(), 2u);
}

}  // namespace
}  // namespace ostra
