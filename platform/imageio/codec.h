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

/// The package that brings the codecs that are modules.
inline constexpr std::string_view kCodecsPackage = "ostra-codecs";

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

/// What reads and writes a format. `encode` is null for a format that is only read.
struct CodecFunctions {
  /// Reads the structure, decodes nothing and refuses nothing for its size.
  Answer<std::unique_ptr<CodecReader>> (*open)(FileBytes file, const Limits& limits) = nullptr;
  /// The rows lie in the memory, each whole; alpha may be of any kind but alone.
  Answer<Bytes> (*encode)(const Pixels& pixels, const Properties* properties) = nullptr;
};

/// One row of the format table. Its functions are in the program, or in a module that is loaded when a file
/// asks for it, so that a heavy library costs nobody else anything. Extensions and MIME types are those of
/// the type.
struct Codec {
  std::string_view type;     // the uniform type identifier
  std::string_view name;     // as people call it
  std::string_view counted;  // what the number of pictures counts
  bool writes;
  bool (*matches)(FileBytes head);
  CodecFunctions functions;      // none when a module has them
  std::string_view module = {};  // such as "webp"
};

/// Every format, in the order in which signatures are tried.
std::span<const Codec> allCodecs();
/// The first codec whose signature the first `kSignatureBytes` bytes of a file (or all of a shorter one)
/// bear, or null.
const Codec* codecForBytes(FileBytes head);
/// The codec of a type identifier, compared exactly, or null.
const Codec* codecForType(std::string_view type);

/// Whether this machine has what the codec needs. Loads nothing. Throws `std::system_error` when that cannot
/// be known.
bool isInstalled(const Codec& codec);
/// The functions of a codec, its module loaded by the first call; null when this machine lacks it. Any
/// thread.
const CodecFunctions* functionsOf(const Codec& codec);
/// Loads the modules of all codecs whose signature the bytes bear.
void loadCodecsFor(FileBytes head);
/// Opens a file with the first codec that bears its signature and knows it. Of a format whose module is
/// missing, the fault tells that.
Answer<std::unique_ptr<CodecReader>> openWithCodec(FileBytes file, const Limits& limits);

}  // namespace ostra
