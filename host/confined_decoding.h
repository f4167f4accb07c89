#pragma once
#include <optional>

#include "platform/foundation/service.h"
#include "platform/imageio/decoder/confined_door.h"
#include "platform/imageio/decoder/zygote.h"

namespace ostra {

/// While it lives, every picture is decoded in a process without rights. It forks: make it before a second
/// thread, a file or a toolkit. Builds with a sanitizer decode in their own process, where it sees
/// everything.
class ConfinedDecoding {
 public:
  /// What the kernel lacks is said once on standard error, and the rest used. Throws `UsageError` instead
  /// when OSTRA_REQUIRE_CONFINEMENT is 1, and always when no process can be made.
  ConfinedDecoding();

 private:
  std::optional<Zygote> zygote_;
  std::optional<ConfinedDoor> door_;
  std::optional<Service<CodecDoor>::Override> override_;
};

}  // namespace ostra
