#include "desktop/extensions/file_items.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/desktop_extensions/file_manager_double.h"
#include "tests/desktop_extensions/language.h"
#include "tests/desktop_extensions/menu_description.h"
#include "tests/desktop_extensions/record.h"

namespace ostra::test {
namespace {

using Item = FileManagerDouble::Item;

struct FreeFiles {
  void operator()(GList* files) const { FileManagerDouble::freeList(files); }
};
using Files = std::unique_ptr<GList, FreeFiles>;

Files add(Files files, const std::string& uri, const std::string& type) {
  return Files(g_list_append(files.release(), FileManagerDouble::newFile(uri, type)));
}

class FileItems : public ::testing::Test {
 protected:
  void SetUp() override {
    writeFile(folder_.path("menu.ini"), menuDescription(OSTRA_RECORDING_PROGRAM, folder_.path()));
  }
  void TearDown() override { EXPECT_EQ(FileManagerDouble::living(), 0); }

  Files items(const Files& files) {
    return Files(menu::FileItems<FileManagerDouble>::forSelection(files.get(), file_));
  }
  static const Contents& topOf(const Files& items) { return *static_cast<Item*>(items->data)->contents; }
  static const std::vector<Item*>& entriesOf(const Files& items) {
    return topOf(items).parts.front()->contents->parts;
  }

  TemporaryFolder folder_;
  menu::MenuFile file_{folder_.path("menu.ini")};
};

TEST_F(FileItems, AreASubmenuWithAnEntryForEachAction) {
  const Language english("en");
  const Files files = add(add({}, "file:///a.png", "image/png"), "file:///b.bmp", "image/x-bmp");
  const Files shown = items(files);
  ASSERT_TRUE(shown);
  EXPECT_EQ(g_list_length(shown.get()), 1U);
  EXPECT_EQ(topOf(shown).title, "Convert Picture");
  EXPECT_EQ(topOf(shown).icon, "org.ostra.Ostra");
  EXPECT_NE(topOf(shown).tooltip, "");
  ASSERT_EQ(entriesOf(shown).size(), 2U);
  EXPECT_EQ(entriesOf(shown)[0]->contents->name, "Ostra::grayscale");
  EXPECT_EQ(entriesOf(shown)[0]->contents->title, "Convert to Grayscale");
  EXPECT_EQ(entriesOf(shown)[1]->contents->tooltip, "Invert");
}

TEST_F(FileItems, AreNotOfferedWhereOneFileIsNoPicture) {
  EXPECT_FALSE(items(add(add({}, "file:///a.png", "image/png"), "file:///b.txt", "text/plain")));
  EXPECT_FALSE(items(add(add({}, "file:///a.png", "image/png"), "file:///folder", "inode/directory")));
  EXPECT_FALSE(items(add({}, "file:///a.png", "")));
  EXPECT_FALSE(items({}));
}

TEST_F(FileItems, AreNotOfferedWhereOneFileHasNoPathHere) {
  EXPECT_FALSE(items(add(add({}, "file:///a.png", "image/png"), "nowhere://host/b.png", "image/png")));
}

TEST_F(FileItems, AreNotOfferedWithoutADescription) {
  menu::MenuFile missing(folder_.path("missing.ini"));
  const Files files = add({}, "file:///a.png", "image/png");
  EXPECT_EQ(menu::FileItems<FileManagerDouble>::forSelection(files.get(), missing), nullptr);
}

TEST_F(FileItems, StartTheProgramWithTheSelection) {
  using namespace std::string_literals;
  Files files =
      add(add({}, "file:///a%20b%0Ac%25.png", "image/png"), "file:///%FF-%C3%BC'%22.png", "image/png");
  const Files shown = items(files);
  files.reset();
  g_signal_emit_by_name(entriesOf(shown)[1], "activate");
  const std::string bundle = folder_.path("invert");
  EXPECT_EQ(recordAt(bundle), expectedRecord(bundle, "/a b\nc%.png\0/\xff-\xc3\xbc'\".png\0"s));
}

TEST_F(FileItems, KeepTheMenuThatTheyWereMadeFor) {
  const Files shown = items(add({}, "file:///a.png", "image/png"));
  writeFile(folder_.path("menu.ini"), menuDescription("/nowhere/new", "/elsewhere"));
  EXPECT_TRUE(items(add({}, "file:///a.png", "image/png")));
  g_signal_emit_by_name(entriesOf(shown)[0], "activate");
  EXPECT_NE(recordAt(folder_.path("grayscale")), "");
}

}  // namespace
}  // namespace ostra::test
