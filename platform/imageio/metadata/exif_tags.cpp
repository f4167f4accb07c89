#include "platform/imageio/metadata/exif_tags.h"

#include <algorithm>
#include <array>

#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

using F = ExifForm;

// clang-format off
constexpr ExifTag kTiffTags[] = {
    {259, "Compression", kShort, F::integer, true},
    {262, "PhotometricInterpretation", kShort, F::integer, true},
    {269, "DocumentName", kAscii, F::text},
    {270, "ImageDescription", kAscii, F::text},
    {271, "Make", kAscii, F::text},
    {272, "Model", kAscii, F::text},
    {kOrientationTag, "Orientation", kShort, F::integer},
    {kXResolutionTag, "XResolution", kRational, F::real},
    {kYResolutionTag, "YResolution", kRational, F::real},
    {286, "XPosition", kRational, F::real},
    {287, "YPosition", kRational, F::real},
    {kResolutionUnitTag, "ResolutionUnit", kShort, F::integer},
    {301, "TransferFunction", kShort, F::integers},
    {305, "Software", kAscii, F::text},
    {306, "DateTime", kAscii, F::text},
    {315, "Artist", kAscii, F::text},
    {316, "HostComputer", kAscii, F::text},
    {318, "WhitePoint", kRational, F::reals},
    {319, "PrimaryChromaticities", kRational, F::reals},
    {322, "TileWidth", kLong, F::integer, true},
    {323, "TileLength", kLong, F::integer, true},
    {33432, "Copyright", kAscii, F::text},
};

constexpr ExifTag kExifTags[] = {
    {0x829A, "ExposureTime", kRational, F::real},
    {0x829D, "FNumber", kRational, F::real},
    {0x8822, "ExposureProgram", kShort, F::integer},
    {0x8824, "SpectralSensitivity", kAscii, F::text},
    {0x8827, "ISOSpeedRatings", kShort, F::integers},
    {0x8828, "OECF", kUndefined, F::data},
    {0x8830, "SensitivityType", kShort, F::integer},
    {0x8831, "StandardOutputSensitivity", kLong, F::integer},
    {0x8832, "RecommendedExposureIndex", kLong, F::integer},
    {0x8833, "ISOSpeed", kLong, F::integer},
    {0x8834, "ISOSpeedLatitudeyyy", kLong, F::integer},
    {0x8835, "ISOSpeedLatitudezzz", kLong, F::integer},
    {0x9000, "ExifVersion", kUndefined, F::version},
    {0x9003, "DateTimeOriginal", kAscii, F::text},
    {0x9004, "DateTimeDigitized", kAscii, F::text},
    {0x9010, "OffsetTime", kAscii, F::text},
    {0x9011, "OffsetTimeOriginal", kAscii, F::text},
    {0x9012, "OffsetTimeDigitized", kAscii, F::text},
    {0x9101, "ComponentsConfiguration", kUndefined, F::integers},
    {0x9102, "CompressedBitsPerPixel", kRational, F::real},
    {0x9201, "ShutterSpeedValue", kSignedRational, F::real},
    {0x9202, "ApertureValue", kRational, F::real},
    {0x9203, "BrightnessValue", kSignedRational, F::real},
    {0x9204, "ExposureBiasValue", kSignedRational, F::real},
    {0x9205, "MaxApertureValue", kRational, F::real},
    {0x9206, "SubjectDistance", kRational, F::real},
    {0x9207, "MeteringMode", kShort, F::integer},
    {0x9208, "LightSource", kShort, F::integer},
    {0x9209, "Flash", kShort, F::integer},
    {0x920A, "FocalLength", kRational, F::real},
    {0x9214, "SubjectArea", kShort, F::integers},
    {0x9286, "UserComment", kUndefined, F::comment},
    {0x9290, "SubsecTime", kAscii, F::text},
    {0x9291, "SubsecTimeOriginal", kAscii, F::text},
    {0x9292, "SubsecTimeDigitized", kAscii, F::text},
    {0xA000, "FlashPixVersion", kUndefined, F::version},
    {0xA001, "ColorSpace", kShort, F::integer},
    {0xA002, "PixelXDimension", kLong, F::integer},
    {0xA003, "PixelYDimension", kLong, F::integer},
    {0xA004, "RelatedSoundFile", kAscii, F::text},
    {0xA20B, "FlashEnergy", kRational, F::real},
    {0xA20C, "SpatialFrequencyResponse", kUndefined, F::data},
    {0xA20E, "FocalPlaneXResolution", kRational, F::real},
    {0xA20F, "FocalPlaneYResolution", kRational, F::real},
    {0xA210, "FocalPlaneResolutionUnit", kShort, F::integer},
    {0xA214, "SubjectLocation", kShort, F::integers},
    {0xA215, "ExposureIndex", kRational, F::real},
    {0xA217, "SensingMethod", kShort, F::integer},
    {0xA300, "FileSource", kUndefined, F::integer},
    {0xA301, "SceneType", kUndefined, F::integer},
    {0xA302, "CFAPattern", kUndefined, F::integers},
    {0xA401, "CustomRendered", kShort, F::integer},
    {0xA402, "ExposureMode", kShort, F::integer},
    {0xA403, "WhiteBalance", kShort, F::integer},
    {0xA404, "DigitalZoomRatio", kRational, F::real},
    {0xA405, "FocalLenIn35mmFilm", kShort, F::integer},
    {0xA406, "SceneCaptureType", kShort, F::integer},
    {0xA407, "GainControl", kShort, F::integer},
    {0xA408, "Contrast", kShort, F::integer},
    {0xA409, "Saturation", kShort, F::integer},
    {0xA40A, "Sharpness", kShort, F::integer},
    {0xA40B, "DeviceSettingDescription", kUndefined, F::data},
    {0xA40C, "SubjectDistRange", kShort, F::integer},
    {0xA420, "ImageUniqueID", kAscii, F::text},
    {0xA430, "CameraOwnerName", kAscii, F::text},
    {0xA431, "BodySerialNumber", kAscii, F::text},
    {0xA432, "LensSpecification", kRational, F::reals},
    {0xA433, "LensMake", kAscii, F::text},
    {0xA434, "LensModel", kAscii, F::text},
    {0xA435, "LensSerialNumber", kAscii, F::text},
    {0xA460, "CompositeImage", kShort, F::integer},
    {0xA461, "SourceImageNumberOfCompositeImage", kShort, F::integers},
    {0xA462, "SourceExposureTimesOfCompositeImage", kUndefined, F::data},
    {0xA500, "Gamma", kRational, F::real},
};

constexpr ExifTag kGpsTags[] = {
    {0, "GPSVersion", kByte, F::integers},
    {1, "LatitudeRef", kAscii, F::text},
    {2, "Latitude", kRational, F::degrees},
    {3, "LongitudeRef", kAscii, F::text},
    {4, "Longitude", kRational, F::degrees},
    {5, "AltitudeRef", kByte, F::integer},
    {6, "Altitude", kRational, F::real},
    {7, "TimeStamp", kRational, F::time},
    {8, "Satellites", kAscii, F::text},
    {9, "Status", kAscii, F::text},
    {10, "MeasureMode", kAscii, F::text},
    {11, "DOP", kRational, F::real},
    {12, "SpeedRef", kAscii, F::text},
    {13, "Speed", kRational, F::real},
    {14, "TrackRef", kAscii, F::text},
    {15, "Track", kRational, F::real},
    {16, "ImgDirectionRef", kAscii, F::text},
    {17, "ImgDirection", kRational, F::real},
    {18, "MapDatum", kAscii, F::text},
    {19, "DestLatitudeRef", kAscii, F::text},
    {20, "DestLatitude", kRational, F::degrees},
    {21, "DestLongitudeRef", kAscii, F::text},
    {22, "DestLongitude", kRational, F::degrees},
    {23, "DestBearingRef", kAscii, F::text},
    {24, "DestBearing", kRational, F::real},
    {25, "DestDistanceRef", kAscii, F::text},
    {26, "DestDistance", kRational, F::real},
    {27, "ProcessingMethod", kUndefined, F::comment},
    {28, "AreaInformation", kUndefined, F::comment},
    {29, "DateStamp", kAscii, F::text},
    {30, "Differential", kShort, F::integer},
    {31, "HPositioningError", kRational, F::real},
};
// clang-format on

constexpr std::array<ExifGroup, 3> kGroups = {{
    {kCGImagePropertyTIFFDictionary, IfdKind::tiff, kTiffTags},
    {kCGImagePropertyExifDictionary, IfdKind::exif, kExifTags},
    {kCGImagePropertyGPSDictionary, IfdKind::gps, kGpsTags},
}};

template <class Matches>
const ExifTag* firstTag(const ExifGroup& group, Matches matches) {
  const auto found = std::find_if(group.tags.begin(), group.tags.end(), matches);
  return found == group.tags.end() ? nullptr : &*found;
}

}  // namespace

std::span<const ExifGroup> exifGroups() { return kGroups; }

const ExifTag* findTag(const ExifGroup& group, std::string_view key) {
  return firstTag(group, [&](const ExifTag& tag) { return tag.key == key; });
}

const ExifTag* findTag(const ExifGroup& group, std::uint16_t number) {
  return firstTag(group, [&](const ExifTag& tag) { return tag.tag == number; });
}

}  // namespace ostra
