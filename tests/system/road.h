#pragma once
#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <string_view>

namespace ostra::test {

/// One way of a picture through the program: what it starts from and what it makes.
struct Road {
  const char* name;
  const char* action;
  const char* source;       // the picture that is given
  const char* destination;  // the file that is written
  bool destinationExists = true;
  bool cacheIsElsewhere = false;  // on another file system than the picture
  bool canExchange = true;
  const char* format = "PNG";  // of the source
};

/// As a part of a test's name.
inline std::string testNameOf(const Road& road) {
  std::string name = road.name;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

inline void PrintTo(const Road& road, std::ostream* out) { *out << road.name; }

inline constexpr std::array kRoads = {
    Road{"in-place", "invert", "a.png", "a.png"},
    Road{"in-place-beside", "invert", "a.png", "a.png", true, true},
    Road{"in-place-by-rename", "invert", "a.png", "a.png", true, false, false},
    Road{"new-sibling", "srgb-jpg", "a.png", "a.jpg", false},
    Road{"existing-sibling", "srgb-jpg", "a.png", "a.jpg"},
    Road{"disguised-source", "jpg", "x.jpg", "x.jpg"},
    // Read and written by a module, each in a process of its own.
    Road{"in-place-module", "invert", "a.tif", "a.tif", true, false, true, "TIFF"},
};

/// The same ways with pictures of further formats, for the long runs.
inline constexpr std::array kRoadsOfFormats = {
    Road{"in-place-gif", "invert", "a.gif", "a.gif", true, false, true, "GIF"},
    Road{"in-place-jpeg2000", "invert", "a.jp2", "a.jp2", true, false, true, "JP2"},
    Road{"in-place-heic", "invert", "a.heic", "a.heic", true, false, true, "HEIC"},
    Road{"in-place-avif", "invert", "a.avif", "a.avif", true, false, true, "AVIF"},
    Road{"sibling-of-webp", "srgb", "a.webp", "a.png", false, false, true, "WEBP"},
};

}  // namespace ostra::test
