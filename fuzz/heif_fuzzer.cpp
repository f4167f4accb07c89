#include "fuzz/codec_round_trip.h"

/// The encoder keeps what it was given for each picture, until the process ends.
extern "C" const char* __lsan_default_suppressions() { return "leak:libx265.so"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::roundTripCodec("public.heic", {data, size});
  return 0;
}
