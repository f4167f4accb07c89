#include "fuzz/codec_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::roundTripCodec("com.microsoft.bmp", {data, size});
  return 0;
}
