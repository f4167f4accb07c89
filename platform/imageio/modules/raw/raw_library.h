#pragma once
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include <libraw/libraw.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/decode_clock.h"

namespace ostra {

/// The library would share its work among threads. For the calling thread and, in a process that is forked
/// from it, for its successor.
void keepToOneThread();

/// A file in memory, which knows when more was read than it has.
class RawStream : public LibRaw_buffer_datastream {
 public:
  explicit RawStream(FileBytes file);
  int read(void* to, std::size_t size, std::size_t count) override;
  int get_char() override;
  /// Reads what there is without going on.
  void peek(std::span<char> to);
  /// Bytes that were asked for behind the end.
  std::uint64_t missing() const { return missing_; }
  void forget() { missing_ = 0; }

 private:
  std::uint64_t missing_ = 0;
};

/// The library on one file, set up for developing without any guess at what would look better.
class RawLibrary {
 public:
  RawLibrary(FileBytes file, const Limits& limits);

  /// Reads the structure.
  std::optional<Fault> open();
  /// Width and height once developed. No pixels can be read after that.
  std::pair<std::uint32_t, std::uint32_t> developedSize();
  /// How the camera was held, in Exif's numbers.
  int orientation() const { return orientation_; }
  /// Reads and develops the pixels. `lookahead` is how far the decompression of a whole file may look behind
  /// its end, in bytes.
  std::optional<Fault> develop(std::uint64_t lookahead);
  /// The bytes of memory that this takes for a pixel, ours included.
  std::uint64_t bytesForAPixel() const;
  const LibRaw* operator->() const { return library_.get(); }

 private:
  std::optional<Fault> faultOf(int result) const;

  RawStream stream_;
  DecodeClock clock_;
  bool lostData_ = false;
  int orientation_ = 1;
  std::unique_ptr<LibRaw> library_;
};

}  // namespace ostra
