#include <gtest/gtest.h>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/property_keys.h"
#include "tests/platform/imageio/metadata/exiftool.h"

namespace ostra {

namespace {

/// A key, a value for it, and what exiftool is to say of the written tag.
struct Row {
  const char* group;
  const char* key;
  Value value;
  const char* tag;
  const char* shown;
};

Value list(std::initializer_list<Value> values) { return Array(values); }

std::vector<Row> tiffRows() {
  return {
      {"{TIFF}", "DocumentName", "doc", "IFD0:DocumentName", "doc"},
      {"{TIFF}", "ImageDescription", "a caf\u00e9", "IFD0:ImageDescription", "a caf\u00e9"},
      {"{TIFF}", "Make", "Acme", "IFD0:Make", "Acme"},
      {"{TIFF}", "Model", "One", "IFD0:Model", "One"},
      {"{TIFF}", "Orientation", 6, "IFD0:Orientation", "6"},
      {"{TIFF}", "XResolution", 300.0, "IFD0:XResolution", "300"},
      {"{TIFF}", "YResolution", 150.5, "IFD0:YResolution", "150.5"},
      {"{TIFF}", "XPosition", 1.5, "IFD0:XPosition", "1.5"},
      {"{TIFF}", "YPosition", 2.5, "IFD0:YPosition", "2.5"},
      {"{TIFF}", "ResolutionUnit", 2, "IFD0:ResolutionUnit", "2"},
      {"{TIFF}", "TransferFunction", list({0, 100, 65535}), "IFD0:TransferFunction", nullptr},
      {"{TIFF}", "Software", "soft", "IFD0:Software", "soft"},
      {"{TIFF}", "DateTime", "2024:02:03 04:05:06", "IFD0:ModifyDate", "2024:02:03 04:05:06"},
      {"{TIFF}", "Artist", "Ann", "IFD0:Artist", "Ann"},
      {"{TIFF}", "HostComputer", "host", "IFD0:HostComputer", "host"},
      {"{TIFF}", "WhitePoint", list({0.3127, 0.329}), "IFD0:WhitePoint", "0.3127 0.329"},
      {"{TIFF}", "PrimaryChromaticities", list({0.64, 0.33, 0.3, 0.6, 0.15, 0.06}),
       "IFD0:PrimaryChromaticities", "0.64 0.33 0.3 0.6 0.15 0.06"},
      {"{TIFF}", "Copyright", "(c) Ann", "IFD0:Copyright", "(c) Ann"},
  };
}

std::vector<Row> exifRows() {
  const Bytes blob{1, 2, 3, 4, 5, 6};
  return {
      {"{Exif}", "ExposureTime", 1 / 60.0, "ExifIFD:ExposureTime", "0.01666666667"},
      {"{Exif}", "FNumber", 2.8, "ExifIFD:FNumber", "2.8"},
      {"{Exif}", "ExposureProgram", 2, "ExifIFD:ExposureProgram", "2"},
      {"{Exif}", "SpectralSensitivity", "rgb", "ExifIFD:SpectralSensitivity", "rgb"},
      {"{Exif}", "ISOSpeedRatings", list({400}), "ExifIFD:ISO", "400"},
      {"{Exif}", "OECF", blob, "ExifIFD:Opto-ElectricConvFactor", nullptr},
      {"{Exif}", "SensitivityType", 2, "ExifIFD:SensitivityType", "2"},
      {"{Exif}", "StandardOutputSensitivity", 100, "ExifIFD:StandardOutputSensitivity", "100"},
      {"{Exif}", "RecommendedExposureIndex", 200, "ExifIFD:RecommendedExposureIndex", "200"},
      {"{Exif}", "ISOSpeed", 102400, "ExifIFD:ISOSpeed", "102400"},
      {"{Exif}", "ISOSpeedLatitudeyyy", 1, "ExifIFD:ISOSpeedLatitudeyyy", "1"},
      {"{Exif}", "ISOSpeedLatitudezzz", 2, "ExifIFD:ISOSpeedLatitudezzz", "2"},
      {"{Exif}", "ExifVersion", list({2, 3, 2}), "ExifIFD:ExifVersion", "0232"},
      {"{Exif}", "DateTimeOriginal", "2024:02:03 04:05:07", "ExifIFD:DateTimeOriginal",
       "2024:02:03 04:05:07"},
      {"{Exif}", "DateTimeDigitized", "2024:02:03 04:05:08", "ExifIFD:CreateDate", "2024:02:03 04:05:08"},
      {"{Exif}", "OffsetTime", "+01:00", "ExifIFD:OffsetTime", "+01:00"},
      {"{Exif}", "OffsetTimeOriginal", "+02:00", "ExifIFD:OffsetTimeOriginal", "+02:00"},
      {"{Exif}", "OffsetTimeDigitized", "+03:00", "ExifIFD:OffsetTimeDigitized", "+03:00"},
      {"{Exif}", "ComponentsConfiguration", list({1, 2, 3, 0}), "ExifIFD:ComponentsConfiguration", "1 2 3 0"},
      {"{Exif}", "CompressedBitsPerPixel", 4.5, "ExifIFD:CompressedBitsPerPixel", "4.5"},
      // exiftool shows the APEX values of shutter and aperture as seconds and as an f-number.
      {"{Exif}", "ShutterSpeedValue", -2.0, "ExifIFD:ShutterSpeedValue", "4"},
      {"{Exif}", "ApertureValue", 4.0, "ExifIFD:ApertureValue", "4"},
      {"{Exif}", "BrightnessValue", -1.25, "ExifIFD:BrightnessValue", "-1.25"},
      {"{Exif}", "ExposureBiasValue", -2 / 3.0, "ExifIFD:ExposureCompensation", "-0.6666666667"},
      {"{Exif}", "MaxApertureValue", 2.0, "ExifIFD:MaxApertureValue", "2"},
      {"{Exif}", "SubjectDistance", 12.3, "ExifIFD:SubjectDistance", "12.3"},
      {"{Exif}", "MeteringMode", 5, "ExifIFD:MeteringMode", "5"},
      {"{Exif}", "LightSource", 4, "ExifIFD:LightSource", "4"},
      {"{Exif}", "Flash", 16, "ExifIFD:Flash", "16"},
      {"{Exif}", "FocalLength", 50.0, "ExifIFD:FocalLength", "50"},
      {"{Exif}", "SubjectArea", list({10, 20, 30, 40}), "ExifIFD:SubjectArea", "10 20 30 40"},
      {"{Exif}", "UserComment", "Gr\u00fc\u00dfe", "ExifIFD:UserComment", "Gr\u00fc\u00dfe"},
      {"{Exif}", "SubsecTime", "11", "ExifIFD:SubSecTime", "11"},
      {"{Exif}", "SubsecTimeOriginal", "22", "ExifIFD:SubSecTimeOriginal", "22"},
      {"{Exif}", "SubsecTimeDigitized", "33", "ExifIFD:SubSecTimeDigitized", "33"},
      {"{Exif}", "FlashPixVersion", list({1, 0}), "ExifIFD:FlashpixVersion", "0100"},
      {"{Exif}", "ColorSpace", 65535, "ExifIFD:ColorSpace", "65535"},
      {"{Exif}", "PixelXDimension", 4000, "ExifIFD:ExifImageWidth", "4000"},
      {"{Exif}", "PixelYDimension", 3000, "ExifIFD:ExifImageHeight", "3000"},
      {"{Exif}", "RelatedSoundFile", "sound.wav", "ExifIFD:RelatedSoundFile", "sound.wav"},
      {"{Exif}", "FlashEnergy", 7.5, "ExifIFD:FlashEnergy", "7.5"},
      {"{Exif}", "SpatialFrequencyResponse", blob, "ExifIFD:SpatialFrequencyResponse", nullptr},
      {"{Exif}", "FocalPlaneXResolution", 4438.5, "ExifIFD:FocalPlaneXResolution", "4438.5"},
      {"{Exif}", "FocalPlaneYResolution", 4445.25, "ExifIFD:FocalPlaneYResolution", "4445.25"},
      {"{Exif}", "FocalPlaneResolutionUnit", 3, "ExifIFD:FocalPlaneResolutionUnit", "3"},
      {"{Exif}", "SubjectLocation", list({5, 6}), "ExifIFD:SubjectLocation", "5 6"},
      {"{Exif}", "ExposureIndex", 64.0, "ExifIFD:ExposureIndex", "64"},
      {"{Exif}", "SensingMethod", 2, "ExifIFD:SensingMethod", "2"},
      {"{Exif}", "FileSource", 3, "ExifIFD:FileSource", "3"},
      {"{Exif}", "SceneType", 1, "ExifIFD:SceneType", "1"},
      {"{Exif}", "CFAPattern", list({0, 2, 0, 2, 0, 1, 1, 2}), "ExifIFD:CFAPattern", "2 2 0 1 1 2"},
      {"{Exif}", "CustomRendered", 1, "ExifIFD:CustomRendered", "1"},
      {"{Exif}", "ExposureMode", 1, "ExifIFD:ExposureMode", "1"},
      {"{Exif}", "WhiteBalance", 1, "ExifIFD:WhiteBalance", "1"},
      {"{Exif}", "DigitalZoomRatio", 1.5, "ExifIFD:DigitalZoomRatio", "1.5"},
      {"{Exif}", "FocalLenIn35mmFilm", 75, "ExifIFD:FocalLengthIn35mmFormat", "75"},
      {"{Exif}", "SceneCaptureType", 1, "ExifIFD:SceneCaptureType", "1"},
      {"{Exif}", "GainControl", 1, "ExifIFD:GainControl", "1"},
      {"{Exif}", "Contrast", 1, "ExifIFD:Contrast", "1"},
      {"{Exif}", "Saturation", 2, "ExifIFD:Saturation", "2"},
      {"{Exif}", "Sharpness", 1, "ExifIFD:Sharpness", "1"},
      {"{Exif}", "DeviceSettingDescription", blob, "ExifIFD:DeviceSettingDescription", nullptr},
      {"{Exif}", "SubjectDistRange", 3, "ExifIFD:SubjectDistanceRange", "3"},
      {"{Exif}", "ImageUniqueID", "0123456789abcdef0123456789abcdef", "ExifIFD:ImageUniqueID",
       "0123456789abcdef0123456789abcdef"},
      {"{Exif}", "CameraOwnerName", "Owner", "ExifIFD:OwnerName", "Owner"},
      {"{Exif}", "BodySerialNumber", "B1", "ExifIFD:SerialNumber", "B1"},
      {"{Exif}", "LensSpecification", list({24.0, 70.0, 2.8, 4.0}), "ExifIFD:LensInfo", "24 70 2.8 4"},
      {"{Exif}", "LensMake", "LMake", "ExifIFD:LensMake", "LMake"},
      {"{Exif}", "LensModel", "LModel", "ExifIFD:LensModel", "LModel"},
      {"{Exif}", "LensSerialNumber", "L1", "ExifIFD:LensSerialNumber", "L1"},
      {"{Exif}", "CompositeImage", 2, "ExifIFD:CompositeImage", "2"},
      {"{Exif}", "SourceImageNumberOfCompositeImage", list({3, 2}), "ExifIFD:CompositeImageCount", "3 2"},
      {"{Exif}", "SourceExposureTimesOfCompositeImage", blob, "ExifIFD:CompositeImageExposureTimes", nullptr},
      {"{Exif}", "Gamma", 2.2, "ExifIFD:Gamma", "2.2"},
  };
}

std::vector<Row> gpsRows() {
  return {
      {"{GPS}", "GPSVersion", list({2, 3, 0, 0}), "GPS:GPSVersionID", "2 3 0 0"},
      {"{GPS}", "LatitudeRef", "S", "GPS:GPSLatitudeRef", "S"},
      {"{GPS}", "Latitude", 33.5, "GPS:GPSLatitude", "33.5"},
      {"{GPS}", "LongitudeRef", "W", "GPS:GPSLongitudeRef", "W"},
      {"{GPS}", "Longitude", 70.25, "GPS:GPSLongitude", "70.25"},
      {"{GPS}", "AltitudeRef", 1, "GPS:GPSAltitudeRef", "1"},
      {"{GPS}", "Altitude", 12.5, "GPS:GPSAltitude", "12.5"},
      {"{GPS}", "TimeStamp", "12:34:56.5", "GPS:GPSTimeStamp", "12:34:56.5"},
      {"{GPS}", "Satellites", "7", "GPS:GPSSatellites", "7"},
      {"{GPS}", "Status", "A", "GPS:GPSStatus", "A"},
      {"{GPS}", "MeasureMode", "3", "GPS:GPSMeasureMode", "3"},
      {"{GPS}", "DOP", 1.5, "GPS:GPSDOP", "1.5"},
      {"{GPS}", "SpeedRef", "K", "GPS:GPSSpeedRef", "K"},
      {"{GPS}", "Speed", 80.5, "GPS:GPSSpeed", "80.5"},
      {"{GPS}", "TrackRef", "T", "GPS:GPSTrackRef", "T"},
      {"{GPS}", "Track", 90.5, "GPS:GPSTrack", "90.5"},
      {"{GPS}", "ImgDirectionRef", "M", "GPS:GPSImgDirectionRef", "M"},
      {"{GPS}", "ImgDirection", 180.5, "GPS:GPSImgDirection", "180.5"},
      {"{GPS}", "MapDatum", "WGS-84", "GPS:GPSMapDatum", "WGS-84"},
      {"{GPS}", "DestLatitudeRef", "N", "GPS:GPSDestLatitudeRef", "N"},
      {"{GPS}", "DestLatitude", 10.75, "GPS:GPSDestLatitude", "10.75"},
      {"{GPS}", "DestLongitudeRef", "E", "GPS:GPSDestLongitudeRef", "E"},
      {"{GPS}", "DestLongitude", 20.75, "GPS:GPSDestLongitude", "20.75"},
      {"{GPS}", "DestBearingRef", "T", "GPS:GPSDestBearingRef", "T"},
      {"{GPS}", "DestBearing", 45.5, "GPS:GPSDestBearing", "45.5"},
      {"{GPS}", "DestDistanceRef", "K", "GPS:GPSDestDistanceRef", "K"},
      {"{GPS}", "DestDistance", 3.5, "GPS:GPSDestDistance", "3.5"},
      {"{GPS}", "ProcessingMethod", "GPS", "GPS:GPSProcessingMethod", "GPS"},
      {"{GPS}", "AreaInformation", "Square", "GPS:GPSAreaInformation", "Square"},
      {"{GPS}", "DateStamp", "2024:02:03", "GPS:GPSDateStamp", "2024:02:03"},
      {"{GPS}", "Differential", 1, "GPS:GPSDifferential", "1"},
      {"{GPS}", "HPositioningError", 4.5, "GPS:GPSHPositioningError", "4.5"},
  };
}

std::vector<Row> allRows() {
  std::vector<Row> rows = tiffRows();
  for (const auto& more : {exifRows(), gpsRows()}) rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

/// The first four bytes of a pattern are two numbers in the byte order of the block, so that its bytes
/// differ.
bool isComparable(const Row& row) { return row.shown && row.key != std::string_view("CFAPattern"); }

Dictionary treeOf(const std::vector<Row>& rows) {
  Dictionary tree;
  for (const Row& row : rows) {
    tree.emplace(row.group, Dictionary()).first->second.get<Dictionary>()->emplace(row.key, row.value);
  }
  return tree;
}

}  // namespace

TEST(ExifKeys, EveryKeyIsWrittenAsTheTagThatExiftoolKnowsByItsMeaning) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  const auto rows = allRows();
  const auto blocks = writeMetadata({treeOf(rows), nullptr}, {});
  ASSERT_TRUE(blocks);
  const auto shown = test::exiftoolTags(blocks->exif, "exif");
  EXPECT_FALSE(shown.contains("ExifTool:Warning")) << shown.at("ExifTool:Warning");
  for (const Row& row : rows) {
    const auto found = shown.find(row.tag);
    ASSERT_NE(found, shown.end()) << row.tag;
    if (row.shown) {
      EXPECT_EQ(found->second, row.shown) << row.tag;
    }
  }
}

TEST(ExifKeys, EveryKeyReadsBackAsItWasWritten) {
  const auto rows = allRows();
  const Dictionary tree = treeOf(rows);
  const auto blocks = writeMetadata({tree, nullptr}, {});
  ASSERT_TRUE(blocks);
  Carrier carrier;
  carrier.exif = blocks->exif;
  const Dictionary read = readMetadata(carrier, {}).tree;
  for (const Row& row : rows) {
    const Dictionary* group = read.at(row.group).get<Dictionary>();
    ASSERT_TRUE(group->contains(row.key)) << row.key;
    EXPECT_TRUE(group->at(row.key) == row.value) << row.key;
  }
}

TEST(ExifKeys, WhatExiftoolWritesIsReadInTheFormOfEachKey) {
  OSTRA_NEEDS_PROGRAM("exiftool");
  OSTRA_NEEDS_PROGRAM("cjpeg");
  const auto rows = allRows();
  std::vector<std::string> arguments;
  for (const Row& row : rows) {
    if (isComparable(row)) arguments.push_back("-" + std::string(row.tag) + "#=" + row.shown);
  }
  for (const char* order : {"II", "MM"}) {
    arguments.push_back("-ExifByteOrder=" + std::string(order));
    Carrier carrier;
    carrier.exif = test::blockOf(test::jpegWithTags(arguments), "EXIF");
    ASSERT_FALSE(carrier.exif.empty());
    EXPECT_EQ(carrier.exif[0], order[0]);
    const Dictionary read = readMetadata(carrier, {}).tree;
    for (const Row& row : rows) {
      if (!isComparable(row)) continue;
      const Dictionary* group = read.at(row.group).get<Dictionary>();
      ASSERT_TRUE(group->contains(row.key)) << row.key;
      const Value& value = group->at(row.key);
      const auto number = row.value.number();
      if (number) {
        EXPECT_NEAR(*value.number(), *number, 1e-9) << row.key;
      } else {
        EXPECT_TRUE(value == row.value) << row.key;
      }
    }
  }
}

TEST(ExifKeys, TheLayoutOfAnotherFileIsNotWrittenIntoAFreshBlock) {
  const Dictionary tiff{
      {"Compression", 5}, {"PhotometricInterpretation", 2}, {"TileWidth", 16}, {"TileLength", 16}};
  const auto blocks = writeMetadata({{{"{TIFF}", tiff}}, nullptr}, {});
  ASSERT_TRUE(blocks);
  EXPECT_TRUE(blocks->exif.empty());
}

}  // namespace ostra
