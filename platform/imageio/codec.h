#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// The bytes of a whole file, in memory. Valid as long as the reader that was given them.
using FileBytes = ByteView;

/// How much of a file's beginning decides its format.
inline constexpr std::size_t kSignatureBytes = 64;

/// One file, opened by one codec. `open` of a codec has already read the structure into `opened`.
///
/// `decode` gives the whole picture or a fault, never part of one, and asks for limits before it allocates.
/// `properties` leaves damaged metadata out. Both may throw `std::bad_alloc` and `LimitExceeded`; the door
/// catches them, and decodes nothing of a file whose properties are a fault.
class CodecReader {
 public:
  virtual ~CodecReader() = default;
  virtual const Opened& opened() const = 0;
  virtual Answer<Pixels> decode(std::uint32_t index, const Limits& limits) = 0;
  virtual Answer<Properties> properties(std::uint32_t index, const Limits& limits) = 0;
};

/// One row of the format table: how a format is recognised, read and written. `encode` is null for a format
/// that is only read.
struct Codec {
  std::string_view type;  // the uniform type identifier
  bool (*matches)(FileBytes head);
  /// Reads the structure, decodes nothing and refuses nothing for its size.
  Answer<std::unique_ptr<CodecReader>> (*open)(FileBytes file, const Limits& limits);
  /// The rows lie in the memory, each whole; alpha may be of any kind but alone.
  Answer<Bytes> (*encode)(const Pixels& pixels, const Properties* properties);
};

/// Every format, in the order in which signatures are tried.
std::span<const Codec> allCodecs();
/// The codec whose signature the first `kSignatureBytes` bytes of a file (or all of a shorter one) bear, or
/// null.
const Codec* codecForBytes(FileBytes head);
/// The codec of a type identifier, compared exactly, or null.
const Codec* codecForType(std::string_view type);

}  // namespace ostra
