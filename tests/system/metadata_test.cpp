#include <algorithm>
#include <filesystem>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using Tags = std::vector<std::string>;

// A picture with camera data, position, caption, keywords and a rating, as exiftool writes them.
void addMetadata(const std::string& path) {
  const ProgramResult result = runProgram({"exiftool",
                                           "-q",
                                           "-overwrite_original",
                                           "-Make=Nobody",
                                           "-Model=N 1",
                                           "-LensModel=50mm f/1.8",
                                           "-ExposureTime=1/60",
                                           "-FNumber=2.8",
                                           "-ISO=400",
                                           "-DateTimeOriginal=2024:05:06 07:08:09",
                                           "-SubSecTimeOriginal=123",
                                           "-OffsetTimeOriginal=+02:00",
                                           "-Orientation#=6",
                                           "-GPSLatitude=48.858222",
                                           "-GPSLatitudeRef=N",
                                           "-GPSLongitude=2.2945",
                                           "-GPSLongitudeRef=E",
                                           "-GPSAltitude=35",
                                           "-Artist=Jo",
                                           "-Copyright=(c) Jo",
                                           "-ImageDescription=a tower",
                                           "-UserComment=written by hand",
                                           "-XMP-dc:Title=Tower",
                                           "-XMP-xmp:Rating=4",
                                           "-XMP-dc:Subject=iron",
                                           "-XMP-dc:Subject=city",
                                           "-ExifIFD:ColorSpace#=1",
                                           "-XResolution=300",
                                           "-YResolution=300",
                                           "-ResolutionUnit=inches",
                                           path});
  ASSERT_EQ(result.status, 0) << result.errors;
}

void addIptc(const std::string& path) {
  const ProgramResult result =
      runProgram({"exiftool", "-q", "-overwrite_original", "-IPTC:Headline=A tower", "-IPTC:Keywords=iron",
                  "-IPTC:Keywords=city", "-IPTC:Caption-Abstract=by day", path});
  ASSERT_EQ(result.status, 0) << result.errors;
}

// What a conversion may change: the pixels' own description.
Tags withoutPixelDescription(Tags tags) {
  const auto describesPixels = [](const std::string& line) {
    for (const char* start : {"[ICC_Profile]", "[ICC-", "[PNG]", "[PNG-", "[JFIF]", "[Adobe]", "[ICC"}) {
      if (line.starts_with(start)) return true;
    }
    for (const char* name :
         {" ColorSpace ", " ExifImageWidth ", " ExifImageHeight ", " CurrentIPTCDigest "}) {
      if (line.find(name) != std::string::npos) return true;
    }
    return false;
  };
  tags.erase(std::remove_if(tags.begin(), tags.end(), describesPixels), tags.end());
  return tags;
}

// The lines of one list that the other has not: a readable difference.
Tags missingFrom(const Tags& other, const Tags& tags) {
  Tags missing;
  std::set_difference(tags.begin(), tags.end(), other.begin(), other.end(), std::back_inserter(missing));
  return missing;
}

void expectSame(const Tags& after, const Tags& before, const std::string& action) {
  EXPECT_EQ(missingFrom(after, before), Tags()) << action << " lost these";
  EXPECT_EQ(missingFrom(before, after), Tags()) << action << " added these";
}

class Metadata : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
  }
  void run(const std::string& action, const std::string& path) const {
    const ProgramResult result = program.run({action, path});
    ASSERT_EQ(result.status, 0) << result.errors;
  }

  InstalledProgram program;
  TemporaryFolder folder;
};

TEST_F(Metadata, EveryActionKeepsTheTagsOfAJpeg) {
  for (const char* action : {"grayscale", "srgb", "invert", "jpg", "srgb-jpg", "grayscale-jpg"}) {
    const std::string path = folder.path(std::string(action) + ".jpg");
    makePicture(path);
    addMetadata(path);
    addIptc(path);
    const Tags before = withoutPixelDescription(tags(path));
    EXPECT_GT(before.size(), 30u);
    run(action, path);
    expectSame(withoutPixelDescription(tags(path)), before, action);
  }
}

TEST_F(Metadata, EveryActionInPlaceKeepsTheTagsOfAPng) {
  for (const char* action : {"grayscale", "srgb", "invert"}) {
    const std::string path = folder.path(std::string(action) + ".png");
    makePicture(path,
                {"+set", "date:create", "+set", "date:modify", "-define", "png:exclude-chunks=date,tIME"});
    addMetadata(path);
    const Tags before = withoutPixelDescription(tags(path));
    EXPECT_GT(before.size(), 25u);
    run(action, path);
    expectSame(withoutPixelDescription(tags(path)), before, action);
  }
}

TEST_F(Metadata, AJpegBesideAPngTakesItsTagsAlong) {
  makePicture(folder.path("a.png"));
  addMetadata(folder.path("a.png"));
  const Tags before = withoutPixelDescription(tags(folder.path("a.png")));
  run("srgb-jpg", folder.path("a.png"));
  expectSame(withoutPixelDescription(tags(folder.path("a.jpg"))), before, "srgb-jpg");
}

TEST_F(Metadata, TheExifColourSpaceGoesAndTheOrientationStays) {
  makePicture(folder.path("a.jpg"));
  addMetadata(folder.path("a.jpg"));
  run("grayscale", folder.path("a.jpg"));
  const std::string now =
      runProgram({"exiftool", "-s", "-n", "-Orientation", "-ColorSpace", "-a", folder.path("a.jpg")}).output;
  EXPECT_THAT(now, testing::HasSubstr("Orientation                     : 6"));
  EXPECT_THAT(now, testing::Not(testing::HasSubstr("ColorSpace")));
  EXPECT_EQ(identify(folder.path("a.jpg"), "%wx%h"), "97x61");
}

TEST_F(Metadata, AMakerNoteKeepsEveryByteAndItsPlace) {
  // Unknown to every reader, with a length that is no round number, at an even place as cameras put it.
  makePicture(folder.path("a.jpg"));
  addMetadata(folder.path("a.jpg"));
  std::string note = "MAKER";
  for (int i = 0; i < 1021; ++i) note.push_back(static_cast<char>('A' + i * 7 % 53));
  writeFile(folder.path("note"), note);
  const ProgramResult added =
      runProgram({"exiftool", "-q", "-overwrite_original", "-MakerNoteUnknownText<=" + folder.path("note"),
                  folder.path("a.jpg")});
  if (added.status != 0) GTEST_SKIP() << "this exiftool writes no unknown maker note: " << added.errors;
  const Bytes before = readFile(folder.path("a.jpg"));
  const auto find = [&](const Bytes& bytes) {
    return std::search(bytes.begin(), bytes.end(), note.begin(), note.end(),
                       [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); }) -
           bytes.begin();
  };
  const auto exif = [](const Bytes& bytes) {
    const std::string mark = "Exif";
    return std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end()) - bytes.begin();
  };
  ASSERT_LT(find(before), static_cast<std::ptrdiff_t>(before.size()));
  run("invert", folder.path("a.jpg"));
  const Bytes after = readFile(folder.path("a.jpg"));
  ASSERT_LT(find(after), static_cast<std::ptrdiff_t>(after.size()));
  EXPECT_EQ(find(after) - exif(after), find(before) - exif(before));
}

TEST_F(Metadata, AStaleThumbnailIsDropped) {
  makePicture(folder.path("a.jpg"));
  makePicture(folder.path("small.jpg"), {"-resize", "32x20"});
  ASSERT_EQ(runProgram({"exiftool", "-q", "-overwrite_original",
                        "-ThumbnailImage<=" + folder.path("small.jpg"), "-Make=N", folder.path("a.jpg")})
                .status,
            0);
  ASSERT_GT(runProgram({"exiftool", "-b", "-ThumbnailImage", folder.path("a.jpg")}).output.size(), 100u);
  run("invert", folder.path("a.jpg"));
  EXPECT_EQ(runProgram({"exiftool", "-b", "-ThumbnailImage", folder.path("a.jpg")}).output, "");
  EXPECT_EQ(runProgram({"exiftool", "-s3", "-Make", folder.path("a.jpg")}).output, "N\n");
}

TEST_F(Metadata, AProfileThatTheColoursAreKeptInIsKeptByteForByte) {
  const char* profile = "/usr/share/color/icc/compatibleWithAdobeRGB1998.icc";
  if (!std::filesystem::exists(profile)) GTEST_SKIP() << "icc-profiles-free is not installed";
  for (const char* name : {"a.png", "a.jpg"}) {
    makePicture(folder.path(name), {"-profile", profile});
    run("invert", folder.path(name));
    convert({folder.path(name), "icc:" + folder.path("out.icc")});
    EXPECT_EQ(readFile(folder.path("out.icc")), readFile(profile)) << name;
  }
}

}  // namespace
}  // namespace ostra::test
