#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/bytes.h"
#include "platform/imageio/codecs/png_chunks.h"
#include "platform/imageio/metadata/carrier.h"

namespace ostra {

/// The keyword of an iTXt chunk that holds an XMP packet.
inline constexpr std::string_view kPngXmpKeyword = "XML:com.adobe.xmp";
/// What precedes the kind of block in the keyword of a text that holds one in hexadecimal, as many programs
/// wrote metadata before PNG had places for it.
inline constexpr std::string_view kPngRawProfile = "Raw profile type ";

/// UTF-8; the text of an XMP packet is the bytes as they are.
using PngText = CarriedText;

/// The text of a tEXt, zTXt or iTXt chunk; nothing for other chunks or a malformed one. Throws
/// `LimitExceeded` for one of more than `limit` bytes.
std::optional<PngText> readPngText(const PngChunk& chunk, std::size_t limit);

/// The bytes that a raw profile's text holds; nothing when it is none.
std::optional<Bytes> readPngRawProfile(std::string_view text);
std::string pngRawProfile(std::string_view kind, ByteView bytes);

/// Whether the keyword is one of those that the standard registers and the {PNG} group shows.
bool isPngGroupKeyword(std::string_view keyword);

}  // namespace ostra
