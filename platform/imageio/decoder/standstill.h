#pragma once
#include "platform/imageio/decoder/zygote.h"

namespace ostra {

/// Waits until the process has something to say or has ended. False at the deadline, and when the process has
/// not worked at all for a quarter of a minute: the threads of a library that lacked memory may wait for each
/// other for ever. Only for a process that waits for nothing else, such as a file.
bool waitWhileItWorks(const DecoderProcess& worker, Channel::Deadline deadline);

}  // namespace ostra
