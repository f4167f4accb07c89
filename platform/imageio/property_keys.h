#pragma once
#include <string_view>

namespace ostra {

/// Keys at the top level of a picture's properties.
inline constexpr std::string_view kCGImagePropertyPixelWidth = "PixelWidth";
inline constexpr std::string_view kCGImagePropertyPixelHeight = "PixelHeight";
inline constexpr std::string_view kCGImagePropertyDepth = "Depth";
inline constexpr std::string_view kCGImagePropertyHasAlpha = "HasAlpha";
inline constexpr std::string_view kCGImagePropertyColorModel = "ColorModel";
inline constexpr std::string_view kCGImagePropertyProfileName = "ProfileName";
inline constexpr std::string_view kCGImagePropertyOrientation = "Orientation";
inline constexpr std::string_view kCGImagePropertyDPIWidth = "DPIWidth";
inline constexpr std::string_view kCGImagePropertyDPIHeight = "DPIHeight";
inline constexpr std::string_view kCGImagePropertyIsIndexed = "IsIndexed";
inline constexpr std::string_view kCGImagePropertyIsFloat = "IsFloat";
inline constexpr std::string_view kCGImagePropertyFileSize = "FileSize";
inline constexpr std::string_view kCGImagePropertyPrimaryImage = "PrimaryImage";
inline constexpr std::string_view kCGImagePropertyImageCount = "ImageCount";

/// Groups: dictionaries at the top level.
inline constexpr std::string_view kCGImagePropertyExifDictionary = "{Exif}";
inline constexpr std::string_view kCGImagePropertyExifAuxDictionary = "{ExifAux}";
inline constexpr std::string_view kCGImagePropertyTIFFDictionary = "{TIFF}";
inline constexpr std::string_view kCGImagePropertyGPSDictionary = "{GPS}";
inline constexpr std::string_view kCGImagePropertyIPTCDictionary = "{IPTC}";
inline constexpr std::string_view kCGImagePropertyPNGDictionary = "{PNG}";
inline constexpr std::string_view kCGImagePropertyJFIFDictionary = "{JFIF}";
inline constexpr std::string_view kCGImagePropertyGIFDictionary = "{GIF}";
inline constexpr std::string_view kCGImagePropertyTGADictionary = "{TGA}";
inline constexpr std::string_view kCGImagePropertyFileContentsDictionary = "{FileContents}";

/// Inside the Exif group.
inline constexpr std::string_view kCGImagePropertyExifColorSpace = "ColorSpace";

/// An option of the encoder, given among the properties: a double, 0 (smallest) to 1 (best).
inline constexpr std::string_view kCGImageDestinationLossyCompressionQuality =
    "kCGImageDestinationLossyCompressionQuality";

}  // namespace ostra
