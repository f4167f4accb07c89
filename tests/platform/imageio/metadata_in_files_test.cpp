#include <algorithm>
#include <cstdio>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/imageio/codecs/extended_xmp.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/md5.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/picture_files.h"
#include "tests/support/program.h"

namespace ostra::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

using Lines = std::vector<std::string>;

// Every tag that exiftool reads, sorted, less what says how this file lies on the disk.
Lines tagsOf(const Bytes& file, const std::string& extension) {
  const TemporaryFolder folder;
  writeFile(folder.path("a." + extension), file);
  std::istringstream text(run({"exiftool", "-a", "-G1", "-s", "-e", "--System:all", "--File:all",
                               "--ExifTool:all", "--Composite:all", folder.path("a." + extension)}));
  Lines lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

Lines withoutGroups(Lines lines, std::initializer_list<std::string_view> groups) {
  const auto unwanted = [&](const std::string& line) {
    return std::any_of(groups.begin(), groups.end(),
                       [&](std::string_view group) { return line.starts_with(group); });
  };
  std::erase_if(lines, unwanted);
  return lines;
}

Bytes tagged(const Bytes& file, const std::string& extension, std::vector<std::string> words) {
  const TemporaryFolder folder;
  writeFile(folder.path("a." + extension), file);
  words.insert(words.begin(), {"exiftool", "-q", "-overwrite_original"});
  words.push_back(folder.path("a." + extension));
  run(words);
  return readFile(folder.path("a." + extension));
}

const Lines kTags = {"-Make=Nobody",         "-Orientation#=6",       "-ExposureTime=1/60",
                     "-GPSLatitude=48.5",    "-GPSLatitudeRef=N",     "-XMP-dc:Title=Tower",
                     "-XMP-dc:Subject=iron", "-UserComment=by hand",  "-XResolution=300",
                     "-YResolution=300",     "-ResolutionUnit=inches"};

// A rewrite as the engine does it: pixels decoded, the properties less what describes the old file, encoded.
Bytes rewritten(const Bytes& file, std::string_view type) {
  Properties properties = propertiesOf(file);
  for (const std::string_view key :
       {kCGImagePropertyPixelWidth, kCGImagePropertyPixelHeight, kCGImagePropertyDepth,
        kCGImagePropertyHasAlpha, kCGImagePropertyColorModel, kCGImagePropertyProfileName,
        kCGImagePropertyIsIndexed, kCGImagePropertyPNGDictionary})
    properties.remove(key);
  return encoded(type, decoded(file), properties.empty() ? nullptr : &properties);
}

class MetadataInFiles : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
    png_ = madeByImageMagick(
        {"-size", "47x33", "plasma:", "-depth", "8", "-strip", "-define", "png:exclude-chunks=all"}, "png");
    jpeg_ = madeByImageMagick({"-size", "47x33", "plasma:", "-strip"}, "jpg");
  }
  Bytes png_, jpeg_;
};

TEST_F(MetadataInFiles, OfAPngComeOutAsTheyWentIn) {
  const Bytes file = tagged(png_, "png", kTags);
  const Lines before =
      withoutGroups(tagsOf(file, "png"), {"[PNG]", "[PNG-pHYs]", "[ExifIFD]       ExifImage"});
  EXPECT_GT(before.size(), 12u);
  const Bytes now = rewritten(file, "public.png");
  EXPECT_EQ(withoutGroups(tagsOf(now, "png"), {"[PNG]", "[PNG-pHYs]"}), before);
  OSTRA_NEEDS_PROGRAM("pngcheck");
  const TemporaryFolder folder;
  writeFile(folder.path("a.png"), now);
  const std::string report = run({"pngcheck", "-v", folder.path("a.png")});
  EXPECT_EQ(report.find("eXIf"), report.rfind("eXIf")) << "written twice";
}

TEST_F(MetadataInFiles, OfAJpegComeOutAsTheyWentIn) {
  Lines words = kTags;
  words.insert(words.end(),
               {"-IPTC:Headline=A tower", "-IPTC:Keywords=iron", "-IPTC:Keywords=city", "-Comment=said"});
  const Bytes file = tagged(jpeg_, "jpg", words);
  const Lines before = withoutGroups(tagsOf(file, "jpg"), {"[JFIF]", "[Photoshop]"});
  EXPECT_GT(before.size(), 15u);
  const Bytes now = rewritten(file, "public.jpeg");
  EXPECT_EQ(withoutGroups(tagsOf(now, "jpg"), {"[JFIF]", "[Photoshop]"}), before);
  EXPECT_EQ(propertiesOf(now).carrier->comments, std::vector<std::string>{"said"});
}

TEST_F(MetadataInFiles, OfAPngGoIntoAJpegAndItsIptcBackIntoAPng) {
  const Bytes jpeg = rewritten(tagged(png_, "png", kTags), "public.jpeg");
  EXPECT_THAT(tagsOf(jpeg, "jpg"), Contains(HasSubstr("ExposureTime                    : 1/60")));
  const Bytes withIptc = tagged(jpeg, "jpg", {"-IPTC:Headline=A tower"});
  const Properties properties = propertiesOf(withIptc);
  const Bytes png = encoded("public.png", decoded(png_), &properties);
  EXPECT_THAT(tagsOf(png, "png"), Contains(HasSubstr("Headline                        : A tower")));
  EXPECT_EQ(propertiesOf(png).carrier->iptc, properties.carrier->iptc);
}

TEST_F(MetadataInFiles, OfAPngKeepTextsUnderTheirOwnKeywordsButNotUnderBrokenOnes) {
  const auto text = [](std::string_view keyword) {
    return pngChunk("tEXt", bytesOfText(std::string(keyword) + '\0' + "said"));
  };
  Bytes file = withPngChunk(png_, text("parameters"));
  for (const char* keyword : {"bad\x7f", " led", "trailed ", "two  blanks"})
    file = withPngChunk(file, text(keyword));
  const Bytes now = rewritten(file, "public.png");
  EXPECT_LT(positionOf(std::string_view("parameters\0said", 15), now), now.size());
  for (const char* keyword : {"bad\x7f", " led", "trailed ", "two  blanks"}) {
    EXPECT_EQ(positionOf(keyword, now), now.size()) << keyword;
  }
}

// As older programs wrote metadata into a PNG.
Bytes rawProfile(const std::string& kind, const Bytes& block) {
  std::string text = "Raw profile type " + kind + '\0' + "\n" + kind + "\n" + std::to_string(block.size());
  for (std::size_t i = 0; i < block.size(); ++i) {
    char digits[4];
    std::snprintf(digits, sizeof(digits), "%s%02x", i % 36 == 0 ? "\n" : "", block[i]);
    text += digits;
  }
  return pngChunk("tEXt", bytesOfText(text + "\n"));
}

TEST_F(MetadataInFiles, InRawProfilesAreFound) {
  Lines words = kTags;
  words.push_back("-IPTC:Headline=A tower");
  const auto source = propertiesOf(tagged(jpeg_, "jpg", words)).carrier;
  const Bytes exif = rawProfile("exif", joined({bytesOfText(std::string_view("Exif\0\0", 6)), source->exif}));
  const Bytes png =
      withPngChunk(png_, joined({exif, rawProfile("xmp", source->xmp), rawProfile("iptc", source->iptc)}));
  EXPECT_THAT(tagsOf(png, "png"), Contains(HasSubstr("Make                            : Nobody")))
      << "badly made";
  const auto found = propertiesOf(png).carrier;
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->exif, source->exif);
  EXPECT_EQ(found->xmp, source->xmp);
  EXPECT_EQ(found->iptc, source->iptc);
  EXPECT_TRUE(found->texts.empty());
}

TEST_F(MetadataInFiles, InRawProfilesOfImageMagickAreFound) {
  const TemporaryFolder folder;
  writeFile(folder.path("a.jpg"), tagged(jpeg_, "jpg", {"-IPTC:Headline=A tower"}));
  const Bytes png = madeByImageMagick({folder.path("a.jpg")}, "png");
  ASSERT_LT(positionOf("Raw profile type iptc", png), png.size());
  EXPECT_EQ(propertiesOf(png).tree.at("{IPTC}").get<Dictionary>()->at("Headline"), Value("A tower"));
}

TEST_F(MetadataInFiles, TextsOfThePngGroupFindAHomeThatSurvives) {
  const Bytes file = tagged(png_, "png", {"-PNG:Title=Tower", "-PNG:Author=Jo", "-PNG:Copyright=free"});
  EXPECT_EQ(propertiesOf(file).tree.at("{PNG}").get<Dictionary>()->at("Title"), Value("Tower"));
  const Lines now = tagsOf(rewritten(file, "public.png"), "png");
  EXPECT_THAT(now, Contains(HasSubstr("ObjectName                      : Tower")));
  EXPECT_THAT(now, Contains(HasSubstr("Artist                          : Jo")));
  EXPECT_THAT(now, Contains(HasSubstr("Copyright                       : free")));
}

TEST_F(MetadataInFiles, OtherTextsStayInAPng) {
  const auto text = [](std::string_view type, std::string_view content) {
    return pngChunk(type, bytesOfText(content));
  };
  const std::string large(5000, 'x');
  const Bytes file =
      withPngChunk(png_, joined({text("tEXt", std::string_view("parameters\0a tower, steps 20", 28)),
                                 text("tEXt", std::string("workflow") + '\0' + large),
                                 text("iTXt", std::string_view("mood\0\0\0\0\0na\xC3\xAFve", 15))}));
  const auto expected = propertiesOf(file).carrier->texts;
  ASSERT_EQ(expected.size(), 3u);
  EXPECT_EQ(expected[2].text, "na\xC3\xAFve");
  const Bytes now = rewritten(file, "public.png");
  EXPECT_EQ(propertiesOf(now).carrier->texts, expected);
  EXPECT_THAT(tagsOf(now, "png"), Contains(HasSubstr("a tower, steps 20")));
  EXPECT_THAT(tagsOf(now, "png"), Contains(HasSubstr("na\xC3\xAFve")));
}

TEST_F(MetadataInFiles, ADensityReachesBothFormats) {
  Properties properties;
  properties.tree.emplace(kCGImagePropertyDPIWidth, 144.0);
  properties.tree.emplace(kCGImagePropertyDPIHeight, 72.0);
  const Lines lines = tagsOf(encoded("public.png", decoded(png_), &properties), "png");
  EXPECT_THAT(lines, Contains(HasSubstr("PixelsPerUnitX                  : 5669")));
  EXPECT_THAT(lines, Contains(HasSubstr("PixelsPerUnitY                  : 2835")));
}

TEST_F(MetadataInFiles, ALargeXmpPacketContinuesInFurtherSegments) {
  // The last description is the largest: what moves first is not what stands first.
  const Lines words = {"-XMP-dc:Title=Tower", "-XMP-dc:Description=" + std::string(50'000, 'x'),
                       "-XMP-photoshop:Instructions=" + std::string(60'000, 'y'),
                       "-XMP-xmp:Label=" + std::string(70'000, 'z')};
  const Bytes png = tagged(png_, "png", words);
  ASSERT_GT(propertiesOf(png).carrier->xmp.size(), 180'000u);
  const Bytes jpeg = rewritten(png, "public.jpeg");
  const auto xmpOf = [](const Lines& lines) {
    Lines xmp;
    for (const std::string& line : lines) {
      if (line.starts_with("[XMP") && line.find("XMPToolkit") == std::string::npos &&
          line.find("HasExtendedXMP") == std::string::npos)
        xmp.push_back(line);
    }
    std::sort(xmp.begin(), xmp.end());
    return xmp;
  };
  EXPECT_EQ(xmpOf(tagsOf(jpeg, "jpg")), xmpOf(tagsOf(png, "png")));
  // Read by us and written again, also as a PNG, nothing of it is lost either.
  EXPECT_EQ(xmpOf(tagsOf(rewritten(jpeg, "public.png"), "png")), xmpOf(tagsOf(png, "png")));
  EXPECT_EQ(xmpOf(tagsOf(rewritten(jpeg, "public.jpeg"), "jpg")), xmpOf(tagsOf(png, "png")));
}

TEST_F(MetadataInFiles, AnExtensionThatLacksAPartIsLeftOut) {
  const std::string packet =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'><r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
      "<r:Description r:about='' xmlns:xmp='http://ns.adobe.com/xap/1.0/' "
      "xmp:Rating='4'/></r:RDF></x:xmpmeta>";
  const auto split = splitXmp(bytesOfText(packet), 60);
  EXPECT_FALSE(split) << "no room even for the mark";
  EXPECT_FALSE(joinXmp(bytesOfText(packet), bytesOfText("<x:xmpmeta>"), 1000));
}

TEST_F(MetadataInFiles, ExifTooLargeForAJpegShedsInsteadOfFailing) {
  const Bytes png =
      tagged(png_, "png", {"-Make=Nobody", "-Orientation#=6", "-UserComment=" + std::string(80'000, 'x')});
  ASSERT_GT(propertiesOf(png).carrier->exif.size(), 70'000u);
  const Lines now = tagsOf(rewritten(png, "public.jpeg"), "jpg");
  EXPECT_THAT(now, Contains(HasSubstr("Make                            : Nobody")));
  EXPECT_THAT(now, Contains(HasSubstr("Orientation")));
}

TEST_F(MetadataInFiles, ThatAreMalformedMakeNoFile) {
  Properties properties;
  Carrier carrier;
  carrier.exif = randomBytes(200);
  properties.carrier = std::make_shared<const Carrier>(carrier);
  for (const char* type : {"public.png", "public.jpeg"})
    EXPECT_TRUE(std::holds_alternative<Fault>(CodecDoor::standard().encode(type, decoded(png_), &properties)))
        << type;
}

TEST(Md5Names, AreThoseOfMd5sum) {
  OSTRA_NEEDS_PROGRAM("md5sum");
  const TemporaryFolder folder;
  for (const std::size_t size : {0u, 1u, 55u, 56u, 63u, 64u, 65u, 1000u}) {
    const Bytes bytes = randomBytes(size);
    writeFile(folder.path("a"), bytes);
    std::string name = run({"md5sum", folder.path("a")}).substr(0, 32);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::toupper(c); });
    EXPECT_EQ(md5Name(bytes), name) << size;
  }
}

}  // namespace
}  // namespace ostra::test
