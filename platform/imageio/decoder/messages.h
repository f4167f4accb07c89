#pragma once
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// What the decoder process tells of a file, in this order: the first answer at once, the other two after it
/// was let go on.

/// Pixels whose bytes lie in the shared memory, from `offset` on.
struct DecodedPixels {
  Layout layout;
  ProfileRecord profile;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// The value of an answer or its fault, as bytes.
Bytes messageOf(const Answer<Opened>& opened);
Bytes messageOf(const Answer<Properties>& properties);
Bytes messageOf(const Answer<DecodedPixels>& pixels);

/// The answer that the bytes are; nothing when they are none, whatever they are.
std::optional<Answer<Opened>> openedOf(ByteView message);
std::optional<Answer<Properties>> propertiesOf(ByteView message);
std::optional<Answer<DecodedPixels>> pixelsOf(ByteView message);

}  // namespace ostra
