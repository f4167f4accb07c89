#pragma once
#include <chrono>
#include <cstdint>

#include <sys/types.h>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// How long a decoder may take to read a file's structure, in seconds.
inline constexpr unsigned kOpeningSeconds = 30;

/// Limits the calling process to what reading the structure of a file of this size takes: no pixels, a little
/// memory, little time. The hard limits stay, for the parent to go on from. Memory, in bytes, counts as
/// address space.
void limitOpening(std::uint64_t fileSize);

/// Gives another process of the same user what decoding the picture takes, by what its structure claims and
/// within `limits`. False when that process is gone.
bool allowDecoding(pid_t decoder, const Opened& opened, const Limits& limits, std::uint64_t fileSize);

/// Gives a process what encoding such pixels takes with the slowest of the encoders; the time, by the clock,
/// that it may be waited for then.
std::chrono::seconds allowEncoding(pid_t encoder, const Layout& layout, std::uint64_t size);

}  // namespace ostra
