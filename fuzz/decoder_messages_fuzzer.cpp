// What a decoder tells, taken over by whoever attacked it: any bytes are an answer or none, and an answer
// says the same when it is told again.
#include <cstdlib>

#include "platform/imageio/decoder/messages.h"

namespace ostra {

namespace {

template <class T>
void readTwice(ByteView message, std::optional<Answer<T>> (*read)(ByteView)) {
  const auto answer = read(message);
  if (!answer) return;
  const Bytes told = messageOf(*answer);
  const auto again = read(told);
  if (!again || messageOf(*again) != told) std::abort();
}

}  // namespace

}  // namespace ostra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::readTwice({data, size}, ostra::openedOf);
  ostra::readTwice({data, size}, ostra::propertiesOf);
  ostra::readTwice({data, size}, ostra::pixelsOf);
  return 0;
}
