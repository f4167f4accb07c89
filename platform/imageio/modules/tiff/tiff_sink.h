#pragma once
#include <cstdint>

#include <tiffio.h>

#include "platform/foundation/bytes.h"

namespace ostra {

/// A file in memory that the library appends its packed strips to. What it writes into the beginning, which
/// is ours, is dropped, and after `close` everything.
class TiffSink {
 public:
  /// `beginning`: bytes that the file has already.
  explicit TiffSink(Bytes& file) : file_(file), beginning_(file.size()) {}

  /// Null when the library fails. `order`: 'l' or 'b'.
  TIFF* open(char order);
  void close() { closed_ = true; }
  bool lacksMemory() const { return lacksMemory_; }

 private:
  static tmsize_t read(thandle_t, void*, tmsize_t) { return 0; }
  static tmsize_t write(thandle_t self, void* from, tmsize_t size);
  static toff_t seek(thandle_t self, toff_t offset, int from);
  static toff_t size(thandle_t self);
  static int release(thandle_t) { return 0; }
  static int onComplaint(TIFF*, void*, const char*, const char*, va_list) { return 1; }
  tmsize_t append(const std::uint8_t* from, std::size_t size);

  Bytes& file_;
  std::size_t beginning_;
  std::uint64_t position_ = 0;
  bool closed_ = false, lacksMemory_ = false;
};

}  // namespace ostra
