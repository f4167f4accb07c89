#pragma once
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra::test {

enum class PictureFormat { png, jpeg };

/// By the signature alone; nothing for the other formats.
std::optional<PictureFormat> formatOf(ByteView picture);
/// What names of such pictures end in, such as "tiff"; "png" where no format is known.
std::string extensionOf(ByteView picture);

/// The signature and the chunks of a PNG, or the marker segments of a JPEG and the coded pixels between them.
/// What cannot be followed any more is one last part: put together, they are the picture again. Another
/// format is one part.
std::vector<Bytes> cutApart(ByteView picture);
Bytes putTogether(const std::vector<Bytes>& parts);

/// Gives every chunk of a PNG, as far as chunks can be followed, the checksum of what it holds.
void repairChecksums(Bytes& picture);

/// Whether a PNG or JPEG begins and ends as one, nothing behind the end, every checksum right; whether a
/// picture of another format can be decoded.
bool isWhole(ByteView picture);

/// Width times height as the header claims, the first one of several; nothing where it claims none.
std::optional<std::uint64_t> claimedPixels(ByteView picture);

std::uint32_t bigEndian(ByteView bytes, std::size_t offset, std::size_t width);
void putBigEndian(Bytes& bytes, std::size_t offset, std::size_t width, std::uint32_t number);

}  // namespace ostra::test
