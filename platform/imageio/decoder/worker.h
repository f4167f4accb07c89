#pragma once
#include <cstdint>

#include "platform/imageio/decoder/confinement.h"
#include "platform/imageio/limits.h"

namespace ostra {

/// What a decoder is to do. It crosses as it lies, between processes of one program.
struct DecoderTask {
  Limits limits;
  std::uint64_t fileSize = 0;
};

/// The one file of a decoder, served in two phases: its structure is told at once; when the parent then names
/// an index, the properties and after them the pixels. Ends the process. The three descriptors are in their
/// places; nothing else is trusted to be there.
[[noreturn]] void serveFile(const DecoderTask& task, const Confinement& confinement);

/// The exit status of a decoder that said everything it had to say.
inline constexpr int kServed = 0;

}  // namespace ostra
