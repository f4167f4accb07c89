#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>

#include <fnmatch.h>
#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "tests/system/full_pictures.h"
#include "tests/system/installed_program.h"
#include "tests/system/pictures.h"

namespace ostra::test {
namespace {

using Lines = std::vector<std::string>;

// What a conversion may do to the metadata, a row for each row of the page that tells the users. "-" is
// before what goes and "+" before what comes; "?" in front where that depends on the kind of the conversion.
struct Row {
  const char* documented;  // the first cell
  Lines jpegInPlace, pngInPlace, pngToJpeg, textsInPlace, textsToJpeg;
};
using Road = Lines Row::*;

const Lines kPixelXmp = {"-XMP-tiff:ImageWidth=*", "-XMP-tiff:ImageHeight=*", "-XMP-tiff:BitsPerSample=*",
                         "-XMP-tiff:Compression=*", "-XMP-tiff:PhotometricInterpretation=*"};
const Lines kDevelopXmp = {"-XMP-crs:*"};
const Lines kSize = {"-ExifIFD:ExifImage*",  "+ExifIFD:ExifImageWidth=97",  "+ExifIFD:ExifImageHeight=61",
                     "-XMP-exif:ExifImage*", "+XMP-exif:ExifImageWidth=97", "+XMP-exif:ExifImageHeight=61"};
const Lines kOrientation = {"-XMP-tiff:Orientation=3", "+XMP-tiff:Orientation=6"};
const Lines kColourSpace = {"-ExifIFD:ColorSpace=*", "-InteropIFD:InteropIndex=*", "-XMP-exif:ColorSpace=*"};
const Lines kAppendedXmp = {"-XMP-hdrgm:*", "-XMP-HDRGainMap:*", "-XMP-Container:*", "-XMP-GCamera:*"};
const Lines kNewProfile = {"+ICC-header:*", "+ICC_Profile:*"};
const Lines kOldThumbnails = {"-IFD1:*", "-Photoshop:PhotoshopBGRThumbnail=*",
                              "-Photoshop:PhotoshopThumbnail=*", "-XMP-xmp:ThumbnailImage=*"};
const Lines kOldColourXmp = {"-XMP-photoshop:ICCProfileName=*", "-XMP-photoshop:ColorMode=*"};
const Lines kOldColourPng = {"-PNG:Gamma=*",      "-PNG:White*", "-PNG:Red*",
                             "-PNG:Green*",       "-PNG:Blue*",  "-PNG:SignificantBits=*",
                             "-PNG:ICC_Profile=*"};
const Lines kChangedTexts = {"+IFD0:Artist=the Author",
                             "+IFD0:Copyright=the Copyright",
                             "+IFD0:Software=the Software",
                             "+ExifIFD:UserComment=the Comment",
                             "+ExifIFD:DateTimeOriginal=2024:05:06 07:08:09",
                             "+IPTC:ObjectName=the Title",
                             "+IPTC:Caption-Abstract=the Description",
                             "+IPTC:CodedCharacterSet=*",
                             "+IPTC:ApplicationRecordVersion=4",
                             "+Photoshop:IPTCDigest=*"};

Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

const std::vector<Row>& rows() {
  static const std::vector<Row> all = {
      {"thumbnails: Exif IFD1, Photoshop 1033 and 1036, JFIF's extension, `xmp:Thumbnails`",
       kOldThumbnails + Lines{"-JFXX:*", "-APP0 JFXX"},
       kOldThumbnails,
       kOldThumbnails,
       {},
       {}},
      {"Exif `ColorSpace` and the interoperability index; `exif:ColorSpace`",
       kColourSpace,
       kColourSpace,
       kColourSpace,
       {},
       {}},
      {"the old profile: Photoshop 1039, `photoshop:ICCProfile`, `photoshop:ColorMode`; of a PNG `iCCP`, "
       "`sRGB`, "
       "`gAMA`, `cHRM`, `cICP`, `sBIT`, `mDCV`, `cLLI` and raw ICC texts",
       kOldColourXmp + Lines{"?-ICC-header:ColorSpaceData=*", "?+ICC-header:ColorSpaceData=*",
                             "?-ICC_Profile:*", "?+ICC_Profile:*"},
       kOldColourXmp + kOldColourPng +
           Lines{"-cHRM", "-gAMA", "-sBIT", "?-sRGB", "?-PNG:SRGBRendering=*", "?+iCCP",
                 "?+PNG:ProfileName=*", "?-PNG:ColorType=2", "?+PNG:ColorType=0", "?+ICC-header:*",
                 "?+ICC_Profile:*"},
       kOldColourXmp + kNewProfile + Lines{"+APP2 ICC_PROFILE"},
       {"?+sRGB", "?+PNG:SRGBRendering=*", "?+iCCP", "?+PNG:ProfileName=*", "?-PNG:ColorType=2",
        "?+PNG:ColorType=0", "?+ICC-header:*", "?+ICC_Profile:*"},
       kNewProfile + Lines{"+APP2 ICC_PROFILE"}},
      {"`tiff:` size, depth, compression and photometry in XMP", kPixelXmp, kPixelXmp, kPixelXmp, {}, {}},
      {"`crs:*` in XMP", kDevelopXmp, kDevelopXmp, kDevelopXmp, {}, {}},
      {"the multi-picture index and gain maps of a JPEG; `hdrgm:*`, `HDRGainMap:*`, container directories "
       "and "
       "motion-photo marks in XMP",
       kAppendedXmp + Lines{"-MPF0:*", "-MPImage*", "-APP2 MPF"},
       kAppendedXmp,
       kAppendedXmp,
       {},
       {}},
      {"data after the end of a picture (motion-photo video, appended archives), segments after the first "
       "scan",
       {"-trailer"},
       {"-trailer"},
       {"-trailer"},
       {},
       {}},
      {"APPn segments of a JPEG that are not named here",
       {"-APP4 Unknown", "-APP12 Ducky", "-Ducky:Quality=*"},
       {},
       {},
       {},
       {}},
      {"a second Exif block or XMP packet, and an extended packet that lacks a part",
       {"-APP1 http://ns.adobe.com/xap/1.0/"},
       {},
       {},
       {},
       {}},
      {"the names of the parts of an XMP packet (`xmpNote:HasExtendedXMP`)",
       {"-XMP-xmpNote:HasExtendedXMP=*", "+XMP-xmpNote:HasExtendedXMP=*"},
       {},
       {},
       {},
       {}},
      {"JFIF and Adobe marks; progressive or arithmetic coding of a JPEG, interlacing and palette of a PNG",
       {"-Adobe:*", "-APP14 Adobe", "-progressive"},
       {"-PNG:Interlace=1", "+PNG:Interlace=0", "-PLTE", "-PNG:Palette=*"},
       {"+APP0 JFIF", "+JFIF:JFIFVersion=*"},
       {},
       {"+APP0 JFIF", "+JFIF:*"}},
      {"`bKGD`, `hIST`, `sPLT`, `pCAL`, `tIME` of a PNG, and chunks that do not call themselves safe to copy",
       {},
       {"-bKGD", "-hIST", "-sPLT", "-pCAL", "-tIME", "-abCD", "-PNG:BackgroundColor=*",
        "-PNG:PaletteHistogram=*", "-PNG:SuggestedPalette=*", "-PNG:PixelCalibration=*", "-PNG:ModifyDate=*"},
       {},
       {},
       {}},
      {"Title, Author, Description, Copyright, Software, Comment and Creation Time of a PNG",
       {},
       {"-tEXt", "+zTXt"},
       {},
       kChangedTexts +
           Lines{"-PNG:*=the *", "-PNG:CreationTime=2024-05-06T07:08:09", "-tEXt", "+eXIf", "+zTXt"},
       kChangedTexts + Lines{"+APP1 Exif", "+APP13 Photoshop"}},
      {"on the way from PNG to JPEG: the other texts, and chunks that JPEG has no place for",
       {},
       {},
       Lines{"-PNG:*", "-PNG-pHYs:*", "-[A-Zabceghiopst]???", "+COM Disclaimer: the Disclaimer",
             "+COM Warning: the Warning", "+COM Source: the Source", "+COM Title: the Title",
             "+COM Author: the Author", "+COM Description: the Description", "+COM Copyright: the Copyright",
             "+COM Creation Time: the Creation Time", "+COM Software: the Software", "+COM the Comment",
             "+COM parameters: a tower, steps 20", "+COM mood: fr??hlich", "+COM Raw profile type other: *",
             "-xyZz", "+APP1 *", "+APP13 Photoshop"},
       {},
       {"-PNG:*", "-tEXt", "-IHDR", "-IDAT", "-IEND", "+COM Disclaimer: the Disclaimer",
        "+COM Warning: the Warning", "+COM Source: the Source", "+COM Creation Time: the Creation Time"}},
      {"Exif and XMP pixel dimensions", kSize, kSize, kSize, {}, {}},
      {"the orientation in XMP", kOrientation, kOrientation, kOrientation, {}, {}},
      {"the density: Photoshop 1005, JFIF and `pHYs`",
       {"-Photoshop:?Resolution=200", "+Photoshop:?Resolution=72"},
       {"-Photoshop:?Resolution=200", "+Photoshop:?Resolution=144"},
       {"-Photoshop:?Resolution=200", "+Photoshop:?Resolution=144", "+JFIF:ResolutionUnit=1",
        "+JFIF:?Resolution=144"},
       {},
       {}},
  };
  return all;
}

// Rows of the page that no list of tags shows.
const Lines kOfTheFile = {"the birth time of the file", "other hard links"};

Lines differencesOf(Lines before, Lines after) {
  std::sort(before.begin(), before.end());
  std::sort(after.begin(), after.end());
  Lines differences;
  const auto add = [&](char sign, const Lines& in, const Lines& notIn) {
    Lines missing;
    std::set_difference(in.begin(), in.end(), notIn.begin(), notIn.end(), std::back_inserter(missing));
    for (const std::string& line : missing) differences.push_back(sign + line);
  };
  add('-', before, after);
  add('+', after, before);
  return differences;
}

bool matches(const std::string& line, const std::string& pattern) {
  const char* plain = pattern.c_str() + (pattern.starts_with("?") ? 1 : 0);
  return fnmatch(plain, line.c_str(), 0) == 0;
}

void expectAsListed(const Lines& differences, Road road, const std::string& what) {
  Lines listed;
  for (const Row& row : rows()) listed = listed + row.*road;
  for (const std::string& line : differences) {
    EXPECT_TRUE(std::any_of(listed.begin(), listed.end(),
                            [&](const std::string& pattern) { return matches(line, pattern); }))
        << what << " changes what no row lists: " << line;
  }
  for (const std::string& pattern : listed) {
    if (pattern.starts_with("?")) continue;
    EXPECT_TRUE(std::any_of(differences.begin(), differences.end(),
                            [&](const std::string& line) { return matches(line, pattern); }))
        << what << " does not do what a row lists: " << pattern;
  }
}

class Drops : public testing::Test {
 protected:
  void SetUp() override {
    OSTRA_NEEDS_PROGRAM("convert");
    OSTRA_NEEDS_PROGRAM("exiftool");
  }
  // Converts the picture that `make` makes as `from` and compares it with what comes out as `to`.
  void expectRoad(const std::string& action, const std::function<void(const std::string&)>& make,
                  const std::string& from, const std::string& to, Road road) {
    const TemporaryFolder folder;
    make(folder.path(from));
    const Lines before = everyTag(folder.path(from)) + partsOf(folder.path(from));
    const ProgramResult result = program.run({action, folder.path(from)});
    ASSERT_EQ(result.status, 0) << result.errors;
    expectAsListed(differencesOf(before, everyTag(folder.path(to)) + partsOf(folder.path(to))), road,
                   action + " on " + from);
  }
  static const char* byteOrder(std::size_t turn) { return turn % 2 == 0 ? "II" : "MM"; }

  InstalledProgram program;
};

TEST_F(Drops, OfAJpegAreThoseOfTheList) {
  std::size_t turn = 0;
  for (const char* action : {"srgb", "grayscale", "invert", "jpg", "srgb-jpg", "grayscale-jpg"}) {
    const char* order = byteOrder(turn++);
    expectRoad(
        action, [&](const std::string& path) { makeFullJpeg(path, order); }, "a.jpg", "a.jpg",
        &Row::jpegInPlace);
  }
}

TEST_F(Drops, OfAPngAreThoseOfTheList) {
  for (const char* action : {"srgb", "grayscale", "invert"}) {
    for (const char* order : {"II", "MM"})
      expectRoad(
          action, [&](const std::string& path) { makeFullPng(path, order); }, "a.png", "a.png",
          &Row::pngInPlace);
    expectRoad(action, makeTextPng, "a.png", "a.png", &Row::textsInPlace);
  }
}

TEST_F(Drops, OfAJpegMadeOfAPngAreThoseOfTheList) {
  std::size_t turn = 0;
  for (const char* action : {"jpg", "srgb-jpg", "grayscale-jpg"}) {
    const char* order = byteOrder(turn++);
    expectRoad(
        action, [&](const std::string& path) { makeFullPng(path, order); }, "a.png", "a.jpg",
        &Row::pngToJpeg);
    expectRoad(action, makeTextPng, "a.png", "a.jpg", &Row::textsToJpeg);
  }
}

TEST_F(Drops, NeverReachASecondView) {
  const TemporaryFolder folder;
  makeMultiPictureJpeg(folder.path("a.jpg"));
  const Bytes before = readFile(folder.path("a.jpg"));
  for (const char* action : {"srgb", "grayscale", "invert", "jpg", "srgb-jpg", "grayscale-jpg"}) {
    const ProgramResult result = program.run({action, folder.path("a.jpg")});
    EXPECT_EQ(result.status, 1) << action;
    EXPECT_NE(result.errors.find("multi-frame images are not rewritten in place."), std::string::npos)
        << action;
    EXPECT_EQ(readFile(folder.path("a.jpg")), before) << action;
  }
}

// The first cells of the table of one section.
Lines documentedRows() {
  std::ifstream page(OSTRA_BEHAVIOUR);
  Lines cells;
  bool inSection = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("## ")) inSection = line == "## What a conversion changes beside the pixels";
    if (inSection && line.starts_with("| ")) cells.push_back(line.substr(2, line.find(" | ") - 2));
  }
  if (!cells.empty()) cells.erase(cells.begin());  // the head
  return cells;
}

TEST(DropsList, HasTheRowsOfThePage) {
  Lines expected = kOfTheFile, documented = documentedRows();
  for (const Row& row : rows()) expected.emplace_back(row.documented);
  std::sort(expected.begin(), expected.end());
  std::sort(documented.begin(), documented.end());
  EXPECT_EQ(expected, documented);
}

}  // namespace
}  // namespace ostra::test
