#include "tests/engine/engine_fixture.h"

namespace ostra::test {
namespace {

class Plan : public EngineOverDoubles {
 protected:
  /// The plan in words, or why there is none.
  static std::string plan(Kind kind, const std::string& path, const std::string& type,
                          std::int64_t frames = 1) {
    std::string words;
    const std::string failure = failureOf([&] {
      const auto plan = makeEngine(kind)->makePlan(URL::fileURLWithPath(path), type, frames);
      words = plan.destination.path() + " " + plan.uti + (plan.inPlace ? " in place" : " sibling");
    });
    return failure.empty() ? words : failure;
  }
};

constexpr Kind formatKeeping[] = {Kind::convertColorProfile, Kind::grayscale, Kind::sRGB, Kind::invert};
constexpr Kind jpegKinds[] = {Kind::grayscaleJPEG, Kind::jpeg, Kind::sRGBJPEG};

TEST_F(Plan, RewritesAWritableFormatInPlaceUnderItsOwnIdentifier) {
  for (const Kind kind : formatKeeping) {
    EXPECT_EQ(plan(kind, "/a.png", "public.png"), "/a.png public.png in place");
    EXPECT_EQ(plan(kind, "/a.gif", "com.compuserve.gif"), "/a.gif com.compuserve.gif in place");
    EXPECT_EQ(plan(kind, "/b.jpg", "public.jpeg"), "/b.jpg public.jpeg in place");
  }
}

TEST_F(Plan, PutsAPNGBesideAFormatThatCannotBeWritten) {
  for (const Kind kind : formatKeeping) {
    EXPECT_EQ(plan(kind, "/a.webp", "org.webmproject.webp"), "/a.png public.png sibling");
    EXPECT_EQ(plan(kind, "/a.webp", "no.such.type"), "/a.png public.png sibling");
  }
}

TEST_F(Plan, PutsAJPEGBesideWhatIsNone) {
  for (const Kind kind : jpegKinds) {
    EXPECT_EQ(plan(kind, "/c.heic", "public.heic"), "/c.jpg public.jpeg sibling");
    EXPECT_EQ(plan(kind, "/c.png", "public.png"), "/c.jpg public.jpeg sibling");
    EXPECT_EQ(plan(kind, "/c.dat", "no.such.type"), "/c.jpg public.jpeg sibling");
  }
}

TEST_F(Plan, RewritesAJPEGInPlaceUnderItsOwnName) {
  for (const Kind kind : jpegKinds) {
    EXPECT_EQ(plan(kind, "/photo.JPG", "public.jpeg"), "/photo.JPG public.jpeg in place");
    EXPECT_EQ(plan(kind, "/photo.png", "public.jpeg"), "/photo.png public.jpeg in place");
  }
}

TEST_F(Plan, RefusesToRewriteSeveralFramesInPlaceInTheWordsOfTheKind) {
  for (const std::int64_t frames : {2, 12}) {
    for (const Kind kind : formatKeeping) {
      EXPECT_EQ(plan(kind, "/x/anim.gif", "com.compuserve.gif", frames),
                "anim.gif: animated or multi-frame images are not rewritten in place.");
    }
    for (const Kind kind : jpegKinds) {
      EXPECT_EQ(plan(kind, "/x/d.jpg", "public.jpeg", frames),
                "d.jpg: multi-frame images are not rewritten in place.");
    }
  }
}

TEST_F(Plan, DoesNotCountFramesForASibling) {
  EXPECT_EQ(plan(Kind::invert, "/a.webp", "org.webmproject.webp", 40), "/a.png public.png sibling");
  EXPECT_EQ(plan(Kind::grayscaleJPEG, "/a.tif", "public.tiff", 2), "/a.jpg public.jpeg sibling");
  EXPECT_EQ(plan(Kind::grayscale, "/a.tif", "public.tiff", 2),
            "a.tif: animated or multi-frame images are not rewritten in place.");
}

// No declared type derives from JPEG, but identifiers are known in any case: PUBLIC.JPEG is a JPEG by
// conformance and another string than the one that can be written.
TEST_F(Plan, AsksForConformanceToJPEGHereAndForTheExactWritableNameThere) {
  for (const Kind kind : jpegKinds) {
    EXPECT_EQ(plan(kind, "/a.jpg", "PUBLIC.JPEG"), "/a.jpg public.jpeg in place");
  }
  for (const Kind kind : formatKeeping) {
    EXPECT_EQ(plan(kind, "/a.jpg", "PUBLIC.JPEG"), "/a.png public.png sibling");
  }
}

TEST_F(Plan, ReplacesTheLastExtensionOnly) {
  const auto sibling = [](const std::string& path) {
    return makeEngine(Kind::invert)
        ->makePlan(URL::fileURLWithPath(path), "no.such.type", 1)
        .destination.path();
  };
  EXPECT_EQ(sibling("/photo.raw.webp"), "/photo.raw.png");
  EXPECT_EQ(sibling("/scan"), "/scan.png");
  EXPECT_EQ(sibling("/.hidden"), "/.hidden.png");
  EXPECT_EQ(sibling("/.hidden.webp"), "/.hidden.png");
  EXPECT_EQ(sibling("/a."), "/a..png");
  EXPECT_EQ(sibling("/my.folder/scan"), "/my.folder/scan.png");
  EXPECT_EQ(sibling("/a.WEBP"), "/a.png");
}

TEST_F(Plan, KeepsTheVersionOfTheFileThatIsRewritten) {
  const FileVersion version{.device = 1, .inode = 2, .size = 3, .modified = 4, .changed = 5};
  const URL url = URL::fileURLWithPath("/a.png").withFileVersion(version);
  EXPECT_EQ(makeEngine(Kind::invert)->makePlan(url, "public.png", 1).destination.fileVersion(), version);
}

TEST_F(Plan, AsksForTheWritableTypesOnceInAProcess) {
  plan(Kind::invert, "/a.png", "public.png");
  plan(Kind::sRGB, "/a.png", "public.png");
  EXPECT_EQ(RecordingImageDestinationCreation::timesAsked, 1);
}

}  // namespace
}  // namespace ostra::test
