#pragma once

namespace ostra {

/// The context (a `cmsContext`) that the colour library works in. Never freed: transforms of static lifetime
/// refer to it. Throws `std::bad_alloc`.
///
/// So does every call of the library in this context that lacks memory. Left to itself it would take a failed
/// allocation for a fault of the profile and go on with other colours, or use what it did not get. What it
/// had begun is lost then; profiles can be closed as ever.
void* colorLibrary();

}  // namespace ostra
