#pragma once
#include <cstdint>
#include <optional>

#include "platform/imageio/decoder/confinement.h"
#include "platform/imageio/limits.h"

namespace ostra {

/// What a decoder is to do. It crosses as it lies, between processes of one program.
struct DecoderTask {
  Limits limits;
  std::uint64_t fileSize = 0;
  /// The row of the format table to write pixels with; none when a file is to be read.
  std::optional<std::uint32_t> encodes = std::nullopt;
};

/// Does what the task says; ends the process.
[[noreturn]] void serveTask(const DecoderTask& task, const Confinement& confinement);

/// The one file of a decoder, served in two phases: its structure is told at once; when the parent then names
/// an index, the properties and after them the pixels. Ends the process. The three descriptors are in their
/// places; nothing else is trusted to be there.
[[noreturn]] void serveFile(const DecoderTask& task, const Confinement& confinement);

/// One picture to write: its pixels lie in the input, the rest is told; the file that they became is
/// answered. Ends the process.
[[noreturn]] void serveEncoding(const DecoderTask& task, const Confinement& confinement);

/// The exit status of a decoder that said everything it had to say.
inline constexpr int kServed = 0;

}  // namespace ostra
