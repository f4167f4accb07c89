#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/decoder/channel.h"
#include "platform/imageio/decoder/worker.h"

namespace ostra {

/// What every worker does first: takes little memory and time, and gives up its rights. Otherwise it ends.
void beConfined(const DecoderTask& task, const Confinement& confinement);

/// The input, mapped. When somebody shortens it meanwhile, this process ends and no other. Throws
/// `std::bad_alloc`.
FileBytes mapInput(const DecoderTask& task);

/// Ends the process when nobody listens any more.
void tell(const Channel& parent, const Bytes& message);

}  // namespace ostra
