#include "host/file_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/usage_error.h"
#include "tests/support/temporary_folder.h"

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FileListTest : public testing::Test {
 protected:
  std::vector<std::string> read(std::string_view text) {
    test::writeFile(folder_.path("list"), text);
    return readFileList(folder_.path("list"));
  }
  test::TemporaryFolder folder_;
};

TEST_F(FileListTest, HoldsAnyNameUpToTheNextNul) {
  EXPECT_THAT(read(std::string_view("a.png\0-b c.png\0d\ne.png\0", 22)),
              ElementsAre("a.png", "-b c.png", "d\ne.png"));
}

TEST_F(FileListTest, NeedsNoNulAtItsEnd) {
  EXPECT_THAT(read(std::string_view("a\0b", 3)), ElementsAre("a", "b"));
}

TEST_F(FileListTest, SkipsEmptyNames) {
  EXPECT_THAT(read(std::string_view("\0\0a\0\0b\0\0", 8)), ElementsAre("a", "b"));
  EXPECT_THAT(read(""), IsEmpty());
}

TEST_F(FileListTest, IsAUsageErrorWhereItCannotBeRead) {
  EXPECT_THROW(readFileList(folder_.path("nothing")), UsageError);
  EXPECT_THROW(readFileList(folder_.path()), UsageError);
}

}  // namespace
}  // namespace ostra
