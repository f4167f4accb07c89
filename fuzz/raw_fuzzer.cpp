#include <algorithm>

#include "fuzz/codec_round_trip.h"

// One reader for all of them: the rows with a signature are tried in turn.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const ostra::Codec& codec : ostra::allCodecs()) {
    if (codec.module == "raw" && codec.matches({data, std::min(size, ostra::kSignatureBytes)}))
      ostra::roundTripCodec(codec.type, {data, size});
  }
  return 0;
}
