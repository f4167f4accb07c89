#pragma once
#include <algorithm>
#include <string_view>

#include "platform/foundation/bytes.h"

namespace ostra {

/// An Exif block without the mark of JPEG's segments, which some writers put before it in other formats too.
inline ByteView withoutExifMark(ByteView exif) {
  constexpr std::string_view mark("Exif\0\0", 6);
  const bool marked = exif.size() >= mark.size() && std::equal(mark.begin(), mark.end(), exif.begin());
  return marked ? exif.subspan(mark.size()) : exif;
}

}  // namespace ostra
