#include "platform/foundation/bytes.h"

#include <utility>

namespace ostra {

SharedBytes SharedBytes::adopt(Bytes bytes) {
  auto owner = std::make_shared<const Bytes>(std::move(bytes));
  return {owner, ByteView(*owner)};
}

}  // namespace ostra
