#pragma once
#include <memory>

#include <tiffio.h>

#include "platform/foundation/bytes.h"

namespace ostra {

/// A TIFF in memory, opened by the library, which says nothing to anybody but this object. One thread. The
/// bytes must outlive it.
class TiffFile {
 public:
  /// With `directory`, the offset of one, as the current one. Null when the library does not take it for a
  /// TIFF. No call of the library takes more than `mostMemory` at once.
  static std::unique_ptr<TiffFile> open(ByteView bytes, std::uint64_t directory, std::uint64_t mostMemory);
  ~TiffFile();
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  TIFF* get() const { return tiff_; }
  ByteView bytes() const { return bytes_; }
  /// How often the library complained so far of what means lost pixels: some of its decoders go on with what
  /// they have.
  unsigned complaints() const { return complaints_; }

  /// A field of the current directory that is one number or pointer, its default where it has one.
  template <class T>
  T field(std::uint32_t tag, T otherwise = T{}) const {
    T value = otherwise;
    return TIFFGetFieldDefaulted(tiff_, tag, &value) != 0 ? value : otherwise;
  }

 private:
  explicit TiffFile(ByteView bytes) : bytes_(bytes) {}

  static tmsize_t read(thandle_t self, void* into, tmsize_t size);
  static tmsize_t write(thandle_t, void*, tmsize_t) { return 0; }
  static toff_t seek(thandle_t self, toff_t offset, int from);
  static int close(thandle_t) { return 0; }
  static toff_t size(thandle_t self);
  static int map(thandle_t self, void** base, toff_t* size);
  static void unmap(thandle_t, void*, toff_t) {}
  static int onError(TIFF*, void* self, const char* where, const char* format, va_list arguments);
  static int onWarning(TIFF*, void* self, const char* where, const char* format, va_list arguments);

  ByteView bytes_;
  std::uint64_t position_ = 0;
  unsigned complaints_ = 0;
  TIFF* tiff_ = nullptr;
};

struct FreeTiffOptions {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};
using TiffOptions = std::unique_ptr<TIFFOpenOptions, FreeTiffOptions>;

}  // namespace ostra
