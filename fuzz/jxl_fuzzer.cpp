#include "fuzz/codec_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::roundTripCodec("public.jpeg-xl", {data, size});
  return 0;
}
