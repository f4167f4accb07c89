#pragma once
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ostra::test {

/// What other programs say about picture files. None of them shares code with the program's own readers, but
/// for the compressions beneath.

/// Whether the format's own library decodes it to its end without a complaint: libpng by its simplified
/// interface, djpeg for JPEG.
bool libraryDecodes(const std::string& path, bool png);
/// Whether ImageMagick does.
bool imageMagickDecodes(const std::string& path);
/// Whether a checker finds a fault: pngcheck, or djpeg, to which every warning is one.
bool checkerComplains(const std::string& path, bool png);

/// "WIDTHxHEIGHT" as ImageMagick reads it, nothing else of the picture looked at; empty when it cannot.
std::string sizeOf(const std::string& path);

/// Tags of one file by "Group:Tag"; a tag that is there several times has all its values.
using TagMap = std::map<std::string, std::multiset<std::string>>;
/// By exiftool, of all files of a folder at once, by their names. What tells about the file itself and what
/// is computed from other tags is left out.
std::map<std::string, TagMap> tagsOfFolder(const std::string& folder);

}  // namespace ostra::test
