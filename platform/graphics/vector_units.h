#pragma once

/// Marks a loop that is compiled once more for processors with AVX2; the right one is chosen when the program
/// is loaded. Not under sanitizers, which start after that choice, and not with clang, which checks and
/// fuzzes only.
#if defined(__x86_64__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define OSTRA_VECTORISED __attribute__((target_clones("arch=haswell", "default")))
#else
#define OSTRA_VECTORISED
#endif
