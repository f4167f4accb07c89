#pragma once
#include <string>
#include <vector>

namespace ostra::test {

/// Each prints its lines of the table, columns separated by tabs, and says whether all was well. `folder` is
/// where there is room.

/// One request over so many pictures of 1 to 3 megapixels, in place.
bool runManyFiles(const std::string& folder, std::size_t count, unsigned seed);
/// One picture of hundreds of megapixels or two gigabytes, its sides divided by `divisor` to see that all
/// works.
bool runLargePicture(const std::string& folder, const std::string& name, unsigned seed, unsigned divisor);
std::vector<std::string> largePictureNames();

}  // namespace ostra::test
