// Property lists of any content: none crashes, in either direction.
#include <cstdlib>

#include "platform/foundation/error.h"
#include "platform/foundation/property_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const ostra::Value value = ostra::readPropertyList({data, size});
    const ostra::Bytes xml = ostra::writePropertyList(value);
    ostra::readPropertyList(xml);
  } catch (const ostra::NSError&) {
  }
  return 0;
}
