#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace ostra::test {

/// Runs ImageMagick's `convert`; throws with its words when it fails.
void convert(const std::vector<std::string>& arguments);

/// A photograph-like picture (smooth, colourful, seeded) of an odd size, written by ImageMagick. `settings`
/// are its options before the output name, such as {"-depth", "16"}.
void makePicture(const std::string& path, const std::vector<std::string>& settings = {});
/// The same with transparency from left to right.
void makeTransparentPicture(const std::string& path);

/// What ImageMagick says about a picture for a format string of its `identify`, such as "%m %wx%h
/// %[channels]".
std::string identify(const std::string& path, const std::string& format);

/// The stored samples of a picture, as ImageMagick reads them, `map` such as "RGB", "RGBA" or "I"; 8 bits.
std::vector<std::uint8_t> samples8(const std::string& path, const std::string& map);
/// The same at 16 bits.
std::vector<std::uint16_t> samples16(const std::string& path, const std::string& map);

/// All tags that exiftool reads, one "Group:Tag: value" a line, less those that say what the file's bytes are
/// like rather than what the picture is (file times, sizes, offsets); sorted.
std::vector<std::string> tags(const std::string& path);

}  // namespace ostra::test
