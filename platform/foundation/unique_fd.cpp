#include "platform/foundation/unique_fd.h"

#include <unistd.h>

namespace ostra {

UniqueFd::~UniqueFd() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

}  // namespace ostra
