#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/imageio/codec_door.h"
#include "tests/support/temporary_folder.h"

namespace ostra::test {

/// Odd on purpose: no row fills whole bytes, no picture whole blocks.
inline constexpr std::uint32_t kWidth = 47, kHeight = 33;

/// Pseudo-random bytes, the same on every run for a seed.
Bytes randomBytes(std::size_t size, unsigned seed = 1);
/// Samples that change softly from pixel to pixel, `components` of 8 or 16 bits (little-endian) each.
Bytes softSamples(std::uint32_t width, std::uint32_t height, unsigned components, unsigned bits);

/// Pixels of 8 or 16 bits without a profile. `alpha` may be none, noneSkipLast or last.
Pixels pixelsOf(Bytes samples, std::uint32_t width, std::uint32_t height, CGColorSpaceModel model,
                unsigned bits, CGImageAlphaInfo alpha);

/// The standard door's answers for a file of these bytes.
Answer<std::unique_ptr<Reader>> openBytes(ByteView file, const Limits& limits = {});
Answer<Pixels> decodeBytes(ByteView file, const Limits& limits = {});
/// Of a file that must have them; throws when it does not.
Pixels decoded(ByteView file);
Properties propertiesOf(ByteView file);
Bytes encoded(std::string_view type, const Pixels& pixels, const Properties* properties = nullptr);
/// Nothing when it is a fault.
std::optional<Fault> faultOf(const Answer<Pixels>& answer);

/// The pixels as the 16-bit RGBA samples that another program gives for the file: gray repeated, no alpha
/// full.
std::vector<std::uint16_t> asRgba16(const Pixels& pixels);
/// The same by ImageMagick, colours not converted, after `settings` of its own.
std::vector<std::uint16_t> rgba16ByImageMagick(const std::string& path,
                                               const std::vector<std::string>& settings = {});

/// Runs a program and throws with its words when it fails; what it printed.
std::string run(const std::vector<std::string>& command);
/// The bytes of the file that ImageMagick makes of these arguments; the output's name is appended.
Bytes madeByImageMagick(std::vector<std::string> arguments, const std::string& extension);

/// A chunk of a PNG with its checksum.
Bytes pngChunk(std::string_view type, ByteView data);
/// The file with `chunk` right after its header chunk.
Bytes withPngChunk(const Bytes& png, const Bytes& chunk);
/// A marker segment of a JPEG.
Bytes jpegSegment(int marker, std::string_view head, ByteView data);
/// The file with `segment` right after its first marker.
Bytes withJpegSegment(const Bytes& jpeg, const Bytes& segment);

Bytes bytesOfText(std::string_view text);
Bytes joined(std::initializer_list<Bytes> parts);
/// Where `text` begins in `bytes`, or `bytes.size()`.
std::size_t positionOf(std::string_view text, const Bytes& bytes);

}  // namespace ostra::test
