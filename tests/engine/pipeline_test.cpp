#include "tests/doubles/application.h"
#include "tests/engine/engine_fixture.h"

namespace ostra::test {
namespace {

class Pipeline : public EngineOverDoubles {
 protected:
  static OstraQuickActionEngine::Outcome convert(Kind kind, const std::string& path) {
    return makeEngine(kind)->convertFile(URL::fileURLWithPath(path));
  }
  static std::string failure(Kind kind, const std::string& path) {
    return failureOf([&] { convert(kind, path); });
  }
  /// Whether a picture of this layout, converted from `type`, kept its alpha.
  bool keepsAlpha(CGBitmapInfo bitmapInfo, const std::string& type = "public.png") {
    CGImage::Format format = packedFormat(1, 1, 8, 4, CGImageAlphaInfo::none);
    format.bitmapInfo = bitmapInfo;
    addFile("/a.png", type, makeImage(format, sRGB()));
    bench_.log.clear();
    convert(Kind::sRGB, "/a.png");
    return bench_.log.callsBeginningWith({"surface"}).at(0) == "surface 1x1 model 1 bits 8 info 1";
  }
};

TEST_F(Pipeline, GoesFromTheSourceToTheDiskInItsOrder) {
  addFile("/d/a.png", "public.png", transparentImage());
  bench_.sources.files["/d/a.png"].properties = Properties{{{"Orientation", 6}}, nullptr};
  convert(Kind::sRGB, "/d/a.png");
  EXPECT_EQ(
      bench_.log.calls(),
      (Strings{"open /d/a.png uncached", "decode 0 at once", "space kCGColorSpaceSRGB",
               "surface 1x1 model 1 bits 8 info 1", "interpolation 1", "draw 0 0 1 1",
               "make image of surface", "properties 0", "encode public.png", "coordinate /d/a.png option 8",
               "make folder 99 in domain 1 for /d/a.png, creating it", "write /replacement/a.png",
               "replace /d/a.png with /replacement/a.png", "remove /replacement", "coordinated",
               "log info srgb: wrote a.png (in place)", "source released"}));
}

TEST_F(Pipeline, RefusesWhatIsNoImage) {
  const char* notAnImage = "a.txt: not an image ImageIO can read.";
  EXPECT_EQ(failure(Kind::sRGB, "/d/a.txt"), notAnImage);
  for (const std::int64_t count : {0, -1}) {
    addFile("/d/a.txt", "public.png", opaqueImage(), count);
    EXPECT_EQ(failure(Kind::sRGB, "/d/a.txt"), notAnImage);
  }
  addFile("/d/a.txt");
  bench_.sources.files["/d/a.txt"].type = std::nullopt;
  EXPECT_EQ(failure(Kind::sRGB, "/d/a.txt"), notAnImage);
  EXPECT_TRUE(bench_.log.callsBeginningWith({"decode", "write"}).empty());
}

TEST_F(Pipeline, RefusesSeveralFramesBeforeItDecodes) {
  addFile("/a.gif", "com.compuserve.gif", nullptr, 2);
  EXPECT_EQ(failure(Kind::sRGB, "/a.gif"),
            "a.gif: animated or multi-frame images are not rewritten in place.");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"decode"}).empty());
}

TEST_F(Pipeline, ConvertsTheFirstFrameOfManyBesideTheSource) {
  addFile("/a.tif", "public.tiff", opaqueImage(), 2);
  EXPECT_EQ(convert(Kind::jpeg, "/a.tif").destination.path(), "/a.jpg");
  EXPECT_EQ(bench_.log.callsBeginningWith({"decode"}), Strings{"decode 0 at once"});
}

TEST_F(Pipeline, RefusesWhatCannotBeDecoded) {
  addFile("/a.png", "public.png", nullptr);
  EXPECT_EQ(failure(Kind::sRGB, "/a.png"), "a.png: the image could not be decoded.");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"surface", "properties", "encode", "write"}).empty());
}

TEST_F(Pipeline, KeepsAlphaWhereTheLayoutHasIt) {
  for (const CGBitmapInfo alpha : {1u, 2u, 3u, 4u}) EXPECT_TRUE(keepsAlpha(alpha)) << alpha;
  for (const CGBitmapInfo none : {0u, 5u, 6u}) EXPECT_FALSE(keepsAlpha(none)) << none;
}

TEST_F(Pipeline, TakesAnUnknownLayoutForOneWithAlpha) {
  for (const CGBitmapInfo unknown : {7u, 8u, 13u, 31u}) EXPECT_TRUE(keepsAlpha(unknown)) << unknown;
}

TEST_F(Pipeline, KeepsNoAlphaInAJPEG) {
  EXPECT_FALSE(keepsAlpha(1, "public.jpeg"));
  addFile("/a.png", "public.png", transparentImage());
  bench_.log.clear();
  convert(Kind::sRGBJPEG, "/a.png");
  EXPECT_EQ(drawing(), (Strings{"surface 1x1 model 1 bits 8 info 5", "fill colour 1.000000 1.000000",
                                "fill 0 0 1 1", "interpolation 1", "draw 0 0 1 1", "make image of surface"}));
}

TEST_F(Pipeline, LosesAlphaOnlyForTheExactJPEGIdentifier) { EXPECT_TRUE(keepsAlpha(1, "public.JPEG")); }

TEST_F(Pipeline, SaysWhatItDid) {
  addFile("/d/a.webp", "org.webmproject.webp", opaqueImage(), 3);
  const auto outcome = convert(Kind::invert, "/d/a.webp");
  EXPECT_EQ(outcome.source.path(), "/d/a.webp");
  EXPECT_EQ(outcome.destination.path(), "/d/a.png");
  EXPECT_FALSE(outcome.inPlace);
  EXPECT_EQ(bench_.sink.lines, Strings{"info invert: wrote a.png (sibling)"});
}

TEST_F(Pipeline, NamesThePlannedPlaceAlsoWhenTheUserChoseAnother) {
  addFile("/d/a.webp", "org.webmproject.webp");
  bench_.coordination.errorBefore = posixError(13);
  bench_.renderer.answers = {{NSModalResponseOK, URL::fileURLWithPath("/elsewhere/b.png")}};
  const auto outcome = convert(Kind::invert, "/d/a.webp");
  EXPECT_EQ(bench_.writing.files.count("/elsewhere/b.png"), 1u);
  EXPECT_EQ(outcome.destination.path(), "/d/a.png");
  EXPECT_EQ(bench_.sink.lines.at(1), "info invert: wrote a.png (sibling)");
}

TEST_F(Pipeline, WritesNothingBeforeTheBytesAreThere) {
  addFile("/a.png");
  bench_.destinations.failsAlways = true;
  EXPECT_EQ(failure(Kind::sRGB, "/a.png"), "a.png: the public.png writer failed.");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"coordinate", "make folder", "write", "log"}).empty());
}

TEST_F(Pipeline, ReleasesItsSourceAfterAFailureToo) {
  addFile("/a.png", "public.png", nullptr);
  failure(Kind::sRGB, "/a.png");
  EXPECT_EQ(bench_.log.calls().back(), "source released");
}

TEST_F(Pipeline, StartsNoAccessOfItsOwn) {
  addFile("/a.png");
  convert(Kind::sRGB, "/a.png");
  EXPECT_TRUE(bench_.log.callsBeginningWith({"start access", "stop access"}).empty());
}

TEST_F(Pipeline, LogsUnderTheExtensionsName) {
  addFile("/a.png");
  convert(Kind::sRGB, "/a.png");
  EXPECT_EQ(bench_.sink.origins, std::set<std::string>{"org.ostra.QuickActions/QuickAction"});
}

TEST_F(Pipeline, IsQuietWhenTheLevelIsOff) {
  bench_.sink.enabled = {LogLevel::error};
  addFile("/a.png");
  convert(Kind::sRGB, "/a.png");
  EXPECT_TRUE(bench_.sink.lines.empty());
  EXPECT_EQ(bench_.sink.timesAsked, 1) << "one line, and nothing else is logged";
}

}  // namespace
}  // namespace ostra::test
