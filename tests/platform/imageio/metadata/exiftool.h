#pragma once
#include <map>
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"
#include "tests/support/program.h"

namespace ostra::test {

/// What exiftool reads in a file, "Group:Name" to value, as numbers where there are numbers.
std::map<std::string, std::string> exiftoolTags(const Bytes& file, const std::string& extension,
                                                const std::vector<std::string>& options = {});
/// A small JPEG with the tags that the arguments set.
Bytes jpegWithTags(const std::vector<std::string>& arguments);
/// A whole block of a JPEG: "EXIF", "XMP" or "IPTC".
Bytes blockOf(const Bytes& jpeg, const std::string& name);
/// The JPEG with one more segment in front.
Bytes withSegment(const Bytes& jpeg, std::uint8_t marker, const std::string& signature, const Bytes& payload);

}  // namespace ostra::test
