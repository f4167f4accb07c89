#pragma once
#include <vector>

#include <linux/filter.h>

namespace ostra {

/// The system calls of a decoder, as a program for the kernel: an allow-list; calls that libraries try and
/// can do without get an error, all others end the process. Throws `std::system_error`.
std::vector<sock_filter> decoderSystemCallFilter();

}  // namespace ostra
