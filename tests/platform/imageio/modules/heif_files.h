#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {

/// The file with one more property of its primary item, the last to apply.
Bytes withHeifProperty(const Bytes& file, std::string_view type, const Bytes& content);
/// A `clap` property: a part of this size, its centre moved by so much.
Bytes cleanAperture(std::uint32_t width, std::uint32_t height, std::int32_t x, std::int32_t y);
/// The file with other bytes at the first place where `text` stands, `after` bytes behind its beginning.
Bytes withBytesAt(Bytes file, std::string_view text, std::size_t after, const Bytes& bytes);

/// Of two pictures' samples, in decibels; 200 when they are equal.
double peakSignalToNoise(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b);
/// The largest difference of two samples.
int largestDifference(const std::vector<std::uint16_t>& a, const std::vector<std::uint16_t>& b);

/// Pixels of the usual soft kind.
Pixels softPixels(std::uint32_t width, std::uint32_t height, CGColorSpaceModel model, unsigned bits,
                  CGImageAlphaInfo alpha);

}  // namespace ostra::test
