#pragma once
#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

namespace ostra {

/// The library's error handling: an error, or a warning that the pixels are not what was stored, jumps to
/// `escape`.
///
/// Harmless, and passed over: an unknown Adobe colour transform, a JFIF version of the future, scan
/// parameters of a sequential file that say nothing, bytes between segments before the first scan, and up to
/// 32 stray bytes after the last one, which some cameras leave.
struct JpegErrors {
  jpeg_error_mgr manager;  // first: the library knows this one only
  std::jmp_buf escape;
  bool inScan = false;
};

/// Makes `errors` ready; the caller then calls `setjmp(errors.escape)` before any other call of the library.
void prepareJpegErrors(JpegErrors& errors);

/// Whether it was for want of memory that the library jumped.
bool lacksMemory(const JpegErrors& errors);

}  // namespace ostra
