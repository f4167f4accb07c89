#pragma once
#include <string>
#include <vector>

namespace ostra::test {

/// A progressive JPEG with every kind of metadata in it: JFIF with a thumbnail of its own, Exif with its
/// directories, a maker note and a thumbnail, a Photoshop block, XMP in two parts whose second comes in
/// disorder and before the first, a profile, a multi-picture index with a gain map behind the picture,
/// comments, segments that nobody knows, and data after the end. What Exif and XMP tell twice, they tell
/// differently. `byteOrder` is Exif's: "II" or "MM".
void makeFullJpeg(const std::string& path, const std::string& byteOrder);

/// An interlaced PNG with every chunk of the standard and its extensions that a picture of true colour may
/// have, texts under every keyword, the blocks of the JPEG above, and private chunks.
void makeFullPng(const std::string& path, const std::string& byteOrder);

/// A JPEG of two views, for the left and the right eye.
void makeMultiPictureJpeg(const std::string& path);

/// A PNG with a text under each keyword of the standard, two creation times, one of them in the form of Exif,
/// and nothing else.
void makeTextPng(const std::string& path);

/// The chunks of a PNG or the segments of a JPEG up to its pixels, by name, comments with their
/// words, in file order; what comes after the end as "trailer".
std::vector<std::string> partsOf(const std::string& path);

/// Every tag of exiftool's, "Group:Tag=value", unknown ones too, less those that say how the file lies on the
/// disk.
std::vector<std::string> everyTag(const std::string& path);

}  // namespace ostra::test
