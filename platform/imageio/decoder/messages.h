#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/foundation/bytes.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// What the decoder process tells of a file, in this order: the first answer at once, the other two after it
/// was let go on. A process that encodes is told a request and answers with the file.

/// Pixels whose bytes lie in the shared memory, from `offset` on.
struct DecodedPixels {
  Layout layout;
  ProfileRecord profile;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// A picture to encode, less its samples.
struct EncodingRequest {
  Layout layout;
  ProfileRecord profile;
  std::optional<Properties> properties;
};
inline constexpr std::size_t kMostRequestBytes = std::size_t{4} << 30;

/// The value of an answer or its fault, as bytes.
Bytes messageOf(const Answer<Opened>& opened);
Bytes messageOf(const Answer<Properties>& properties);
Bytes messageOf(const Answer<DecodedPixels>& pixels);
Bytes messageOf(const Answer<Bytes>& file);
Bytes messageOf(const EncodingRequest& request);

/// The answer that the bytes are; nothing when they are none, whatever they are.
std::optional<Answer<Opened>> openedOf(ByteView message);
std::optional<Answer<Properties>> propertiesOf(ByteView message);
std::optional<Answer<DecodedPixels>> pixelsOf(ByteView message);
std::optional<Answer<Bytes>> encodedOf(ByteView message);
std::optional<EncodingRequest> requestOf(ByteView message);

}  // namespace ostra
