#include "platform/foundation/url.h"

#include <filesystem>
#include <tuple>

#include <gtest/gtest.h>

#include "platform/foundation/service.h"

namespace ostra {
namespace {

URL file(std::string_view path) { return URL::fileURLWithPath(path); }

std::optional<URL> parsed(std::string_view text) {
  return URL::withDataRepresentation(
      ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

TEST(URL, ExtensionIsWhatStandsBehindTheLastDotOfTheName) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"/a/photo.png", "png", "/a/photo"},
      {"/a/b.tar.gz", "gz", "/a/b.tar"},
      {"/a/.png", "", "/a/.png"},
      {"/a/.hidden.png", "png", "/a/.hidden"},
      {"/a/dot.", "", "/a/dot."},
      {"/a/a.b c", "", "/a/a.b c"},
      {"/a/my photo.png", "png", "/a/my photo"},
      {"/a.b/c", "", "/a.b/c"},
      {"/a/..", "", "/a/.."},
      {"/a/x.PNG", "PNG", "/a/x"},
      {"/a/folder.app/", "app", "/a/folder"},
  };
  for (const auto& [path, extension, rest] : cases) {
    EXPECT_EQ(file(path).pathExtension(), extension) << path;
    EXPECT_EQ(file(path).deletingPathExtension().path(), rest) << path;
  }
}

TEST(URL, LastComponentIsTheNameEvenBeforeATrailingSlash) {
  EXPECT_EQ(file("/a/b.png").lastPathComponent(), "b.png");
  EXPECT_EQ(file("/a/b/").lastPathComponent(), "b");
  EXPECT_EQ(file("/").lastPathComponent(), "/");
  EXPECT_EQ(file("/a/b.png").deletingLastPathComponent().path(), "/a");
  EXPECT_EQ(file("/a").deletingLastPathComponent().path(), "/");
  EXPECT_EQ(file("/").deletingLastPathComponent().path(), "/");
}

TEST(URL, AppendsNamesAndExtensions) {
  EXPECT_EQ(file("/a").appendingPathComponent("b.png").path(), "/a/b.png");
  EXPECT_EQ(file("/").appendingPathComponent("b").path(), "/b");
  EXPECT_EQ(file("/a/scan").appendingPathExtension("png").path(), "/a/scan.png");
}

TEST(URL, PathIsKeptByteForByte) {
  const std::string odd = "/a/./b/../\n\xFF\xFE;$(id)%20.png";
  EXPECT_EQ(file(odd).path(), odd);
}

TEST(URL, RelativePathStartsFromTheWorkingFolder) {
  EXPECT_EQ(file("photo.png").path(), (std::filesystem::current_path() / "photo.png").string());
}

TEST(URL, TextOfAFileURLEncodesWhatAPathMayNotHold) {
  EXPECT_EQ(file("/a b/\xC3\xA9%?#;.png").absoluteString(), "file:///a%20b/%C3%A9%25%3F%23%3B.png");
}

TEST(URL, AnyNameComesBackFromItsText) {
  std::string name = "/";
  for (int byte = 1; byte < 256; ++byte) name += static_cast<char>(byte);
  const auto back = parsed(file(name).absoluteString());
  ASSERT_TRUE(back);
  EXPECT_EQ(back->path(), name);
  EXPECT_EQ(*back, file(name));
}

TEST(URL, ReadsFileURLsWithAndWithoutHost) {
  for (const char* text :
       {"file:///a%20b.png", "file://localhost/a%20b.png", "FILE:/a b.png", "file:///a%20b.png?q#f"}) {
    const auto url = parsed(text);
    ASSERT_TRUE(url) << text;
    EXPECT_TRUE(url->isFileURL()) << text;
    EXPECT_EQ(url->path(), "/a b.png") << text;
  }
}

TEST(URL, RefusesTextThatIsNoAbsoluteURL) {
  for (const char* text : {"", "/a/b.png", "a.png", "file:a.png", "file://elsewhere/a.png", "file:///a%2",
                           "file:///%zz", "file:///a%00b", ":x", "1x:/a"}) {
    EXPECT_FALSE(parsed(text)) << text;
  }
}

TEST(URL, OfAnotherSchemeIsNoFile) {
  const auto url = parsed("https://example.org/a%20b.png");
  ASSERT_TRUE(url);
  EXPECT_FALSE(url->isFileURL());
  EXPECT_EQ(url->path(), "/a b.png");
  EXPECT_EQ(url->absoluteString(), "https://example.org/a%20b.png");
  EXPECT_FALSE(*url == file("/a b.png"));
}

TEST(URL, DerivedURLsCarryNoFileVersion) {
  const URL url = file("/a/b.png").withFileVersion({1, 2, 3, 4, 5});
  ASSERT_TRUE(url.fileVersion());
  EXPECT_EQ(url.fileVersion()->inode, 2U);
  EXPECT_EQ(url, file("/a/b.png"));
  EXPECT_FALSE(url.deletingPathExtension().fileVersion());
  EXPECT_FALSE(url.deletingLastPathComponent().fileVersion());
  EXPECT_FALSE(url.appendingPathComponent("c").fileVersion());
  EXPECT_FALSE(url.appendingPathExtension("c").fileVersion());
}

struct CountingAccess : ScopedAccess {
  bool start(const URL& url) override {
    started = url.path();
    return true;
  }
  void stop(const URL&) override { ++stops; }
  std::string started;
  int stops = 0;
};

TEST(URL, NeedsNoGrantOnThisSystem) { EXPECT_FALSE(file("/a").startAccessingSecurityScopedResource()); }

TEST(URL, AsksTheServiceForAccess) {
  CountingAccess access;
  const Service<ScopedAccess>::Override override(access);
  EXPECT_TRUE(file("/a").startAccessingSecurityScopedResource());
  file("/a").stopAccessingSecurityScopedResource();
  EXPECT_EQ(access.started, "/a");
  EXPECT_EQ(access.stops, 1);
}

}  // namespace
}  // namespace ostra
