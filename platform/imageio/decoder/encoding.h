#pragma once
#include "platform/imageio/codec.h"
#include "platform/imageio/decoder/zygote.h"

namespace ostra {

/// Encodes in a process without rights, as files are decoded: libraries of video formats end the process that
/// they run in when a number does not please them. Such an end is a fault, and nothing is written. A fault is
/// told once it came twice: a library that lacks memory for a moment looks like one that refuses. Throws
/// `std::bad_alloc`, and an `NSError` where the process cannot be had or heard, which is nothing that
/// the picture or its metadata could help.
Answer<Bytes> encodeApart(const Zygote& zygote, const Codec& codec, const Pixels& pixels,
                          const Properties* properties);

}  // namespace ostra
