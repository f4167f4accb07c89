// A GIF that was read has no more colours than a palette holds, so what is written of it is the same picture.
#include <algorithm>
#include <cstdlib>

#include "fuzz/codec_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto pictures = ostra::roundTripCodec("com.compuserve.gif", {data, size});
  if (!pictures) return 0;
  const ostra::Layout &before = pictures->read.layout, &after = pictures->readBack.layout;
  if (before.width != after.width || before.height != after.height) std::abort();
  // The fourth byte of an opaque picture is full, so that one may be called opaque and the other not.
  const auto one = pictures->read.bytes.view, other = pictures->readBack.bytes.view;
  if (!std::equal(one.begin(), one.end(), other.begin(), other.end())) std::abort();
  return 0;
}
