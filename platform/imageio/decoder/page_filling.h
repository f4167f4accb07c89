#pragma once
#include <cstddef>
#include <cstdint>

namespace ostra {

/// Has a second thread ask the system for the pages of shared memory while the decoder still works on the
/// first ones: each page costs a microsecond, and a decoder that meets it has to wait for that. Only for
/// memory that is worth a thread, and not for so much that a lie in a header would cost anything; without a
/// thread, or with an older kernel, pages come as they are met. The memory stays mapped until the process
/// ends.
void fillPagesAhead(std::uint8_t* memory, std::size_t size);

}  // namespace ostra
