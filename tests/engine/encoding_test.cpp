#include "platform/imageio/property_keys.h"
#include "tests/engine/engine_fixture.h"

namespace ostra::test {
namespace {

constexpr std::string_view qualityKey = kCGImageDestinationLossyCompressionQuality;

class Encoding : public EngineOverDoubles {
 protected:
  Dictionary carriedOver(Dictionary tree, std::string_view uti = "public.png") {
    StubImageSource source(bench_.log, {.properties = Properties{std::move(tree), nullptr}});
    return makeEngine(Kind::sRGB)->destinationProperties(source, uti).tree;
  }
  Bytes encode(const std::string& uti, const Properties& properties) {
    return makeEngine(Kind::sRGB)->encodeWithRetry(opaqueImage(), uti, properties, "a.x");
  }
  const std::optional<Properties>& given(std::size_t attempt) {
    return bench_.destinations.encodings.at(attempt).properties;
  }
};

Dictionary quality(double value) { return {{std::string(qualityKey), value}}; }

TEST_F(Encoding, StripsThirteenKeysOfTheOldPixelsAndTheOldFile) {
  const std::vector<std::string_view> stripped{kCGImagePropertyPixelWidth,
                                               kCGImagePropertyPixelHeight,
                                               kCGImagePropertyDepth,
                                               kCGImagePropertyHasAlpha,
                                               kCGImagePropertyColorModel,
                                               kCGImagePropertyProfileName,
                                               kCGImagePropertyIsIndexed,
                                               kCGImagePropertyIsFloat,
                                               kCGImagePropertyPNGDictionary,
                                               kCGImagePropertyFileSize,
                                               kCGImagePropertyFileContentsDictionary,
                                               kCGImagePropertyPrimaryImage,
                                               kCGImagePropertyImageCount};
  ASSERT_EQ(stripped.size(), 13u);
  Dictionary tree{{"Orientation", 6}};
  for (const std::string_view key : stripped) tree.insert_or_assign(std::string(key), 1);
  tree.insert_or_assign(std::string(kCGImagePropertyPNGDictionary), Dictionary{{"Gamma", 0.45}});
  EXPECT_EQ(carriedOver(tree), (Dictionary{{"Orientation", 6}}));
}

TEST_F(Encoding, StripsAtTheTopLevelOnly) {
  const Dictionary tree{{"{TIFF}", Dictionary{{"Depth", 8}, {"PixelWidth", 7}, {"ColorSpace", 1}}},
                        {"{Exif}", Dictionary{{"PixelWidth", 7}, {"FileSize", 9}}}};
  EXPECT_EQ(carriedOver(tree), tree);
}

TEST_F(Encoding, CarriesEverythingElseOver) {
  const Dictionary tree{{"Orientation", 6},
                        {"DPIWidth", 300.0},
                        {"DPIHeight", 300.0},
                        {"{TIFF}", Dictionary{{"Make", "Camera"}}},
                        {"{GPS}", Dictionary{{"Latitude", 47.5}}},
                        {"{IPTC}", Dictionary{{"Keywords", Array{"a", "b"}}}},
                        {"{Exif}", Dictionary{{"ExposureTime", 0.01}}},
                        {"Unheard of", Bytes{1, 2, 3}}};
  EXPECT_EQ(carriedOver(tree), tree);
}

TEST_F(Encoding, RemovesTheColorSpaceFromTheExifGroup) {
  EXPECT_EQ(carriedOver({{"{Exif}", Dictionary{{"ColorSpace", 1}, {"FNumber", 2.8}}}}),
            (Dictionary{{"{Exif}", Dictionary{{"FNumber", 2.8}}}}));
}

TEST_F(Encoding, KeepsAnExifGroupThatTheRemovalLeftEmpty) {
  EXPECT_EQ(carriedOver({{"{Exif}", Dictionary{{"ColorSpace", 1}}}}), (Dictionary{{"{Exif}", Dictionary{}}}));
  EXPECT_EQ(carriedOver({{"{Exif}", Dictionary{}}}), (Dictionary{{"{Exif}", Dictionary{}}}));
}

TEST_F(Encoding, LeavesAnExifEntryOfAnotherFormAlone) {
  EXPECT_EQ(carriedOver({{"{Exif}", "ColorSpace"}}), (Dictionary{{"{Exif}", "ColorSpace"}}));
  EXPECT_EQ(carriedOver({{"{Exif}", Array{"ColorSpace"}}}), (Dictionary{{"{Exif}", Array{"ColorSpace"}}}));
}

TEST_F(Encoding, GivesAQualityToTheFourLossyTypesOnly) {
  for (const char* lossy : {"public.jpeg", "public.heic", "public.heif", "public.avif"}) {
    EXPECT_EQ(carriedOver({}, lossy), quality(0.9)) << lossy;
  }
  for (const char* other : {"public.png", "public.tiff", "com.compuserve.gif", "org.webmproject.webp",
                            "public.jpeg-2000", "PUBLIC.JPEG", "public.heics", ""}) {
    EXPECT_EQ(carriedOver({}, other), Dictionary{}) << other;
  }
}

TEST_F(Encoding, ReplacesAQualityThatIsThereAlready) {
  EXPECT_EQ(carriedOver(quality(0.2), "public.jpeg"), quality(0.9));
}

TEST_F(Encoding, TakesTheQualityFromTheEngine) {
  StubImageSource source(bench_.log, {});
  const OstraQuickActionEngine engine(Kind::jpeg, nullptr, 0.25);
  EXPECT_EQ(engine.destinationProperties(source, "public.jpeg").tree, quality(0.25));
}

TEST_F(Encoding, GoesOnWithoutProperties) {
  StubImageSource source(bench_.log, {.properties = std::nullopt});
  EXPECT_TRUE(makeEngine(Kind::sRGB)->destinationProperties(source, "public.png").empty());
  EXPECT_EQ(bench_.log.callsBeginningWith({"properties"}), Strings{"properties 0"});
}

TEST_F(Encoding, MakesAFileOfOneImage) {
  EXPECT_EQ(encode("public.png", {}), (Bytes{'p', 'u', 'b', 'l', 'i', 'c', '.', 'p', 'n', 'g'}));
  EXPECT_EQ(bench_.destinations.encodings.at(0).count, 1u);
}

TEST_F(Encoding, PassesNoPropertiesRatherThanEmptyOnes) {
  encode("public.png", {});
  EXPECT_FALSE(given(0).has_value());
  encode("public.png", {{{"Orientation", 6}}, nullptr});
  EXPECT_TRUE(given(1).has_value());
}

TEST_F(Encoding, TriesAgainWithTheQualityAloneWhenTheMetadataIsRefused) {
  bench_.destinations.finalizing.refuseAt(1);
  Dictionary tree = quality(0.9);
  tree.insert_or_assign("Orientation", 6);
  EXPECT_FALSE(encode("public.jpeg", {tree, nullptr}).empty());
  EXPECT_EQ(given(0)->tree, tree);
  EXPECT_EQ(given(1)->tree, quality(0.9));
  EXPECT_EQ(given(1)->carrier, nullptr);
  EXPECT_TRUE(bench_.sink.lines.empty()) << "the retry is silent";
}

TEST_F(Encoding, TriesAgainWithNothingAtAllWhereThereIsNoQuality) {
  bench_.destinations.finalizing.refuseAt(1);
  encode("public.png", {{{"Orientation", 6}}, nullptr});
  EXPECT_FALSE(given(1).has_value());
}

TEST_F(Encoding, TriesTwiceAndNoMore) {
  bench_.destinations.failsAlways = true;
  EXPECT_EQ(failureOf([&] { encode("public.png", {}); }), "a.x: the public.png writer failed.");
  EXPECT_EQ(bench_.destinations.encodings.size(), 2u);
}

TEST_F(Encoding, NamesATypeThatCannotBeWritten) {
  bench_.destinations.unwritable = {"no.such.type"};
  EXPECT_EQ(failureOf([&] { encode("no.such.type", {}); }), "a.x: the no.such.type writer failed.");
  EXPECT_EQ(bench_.log.calls(), (Strings{"encode no.such.type", "encode no.such.type"}));
}

}  // namespace
}  // namespace ostra::test
