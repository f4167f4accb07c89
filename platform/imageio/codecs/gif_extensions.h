#pragma once
#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/imageio/codecs/gif_blocks.h"
#include "platform/imageio/limits.h"

namespace ostra {

/// The names of application extensions, with their authentication codes.
inline constexpr std::string_view kGifXmp = "XMP DataXMP", kGifProfile = "ICCRGBG1012";

/// The name of an application extension, and what follows it: sub-blocks and their end. Nothing for other
/// blocks, or one without a whole name.
struct GifApplication {
  std::string_view name;
  ByteView data;
};
std::optional<GifApplication> readGifApplication(const GifBlock& block);

/// What sub-blocks hold. Throws `LimitExceeded` with `name` beyond `limit` bytes.
Bytes joinedSubBlocks(ByteView subBlocks, std::size_t limit, LimitName name);
/// Sub-blocks that hold `bytes`, and their end.
void appendSubBlocks(Bytes& file, ByteView bytes);

/// The XMP packet of an application extension of that name: a packet lies there as it is, behind it bytes
/// that lead a reader of sub-blocks to the end whatever it took for their lengths. Some programs divide it
/// into sub-blocks nevertheless.
Bytes readGifXmp(ByteView data, std::size_t limit);
/// The whole extension; empty for a packet that cannot lie there because it holds a zero byte.
Bytes gifXmpExtension(ByteView packet);

}  // namespace ostra
