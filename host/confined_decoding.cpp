#include "host/confined_decoding.h"

#include <cstdlib>
#include <string>
#include <system_error>

#include "host/message.h"
#include "host/usage_error.h"
#include "platform/graphics/color_space.h"

namespace ostra {
namespace {

#ifdef OSTRA_DECODES_IN_PROCESS
constexpr bool kDecodesInProcess = true;
#else
constexpr bool kDecodesInProcess = false;
#endif

bool confinementIsRequired() {
  const char* value = std::getenv("OSTRA_REQUIRE_CONFINEMENT");
  return value != nullptr && std::string(value) == "1";
}

std::string missingParts(const KernelConfinement& kernel) {
  if (kernel.landlockAbi == 0 && !kernel.seccomp) return "neither Landlock nor seccomp";
  return kernel.landlockAbi == 0 ? "no Landlock" : "no seccomp";
}

void complain(const std::string& missing) {
  if (confinementIsRequired()) {
    throw UsageError("Pictures cannot be decoded in confinement, which OSTRA_REQUIRE_CONFINEMENT asks for: " +
                     missing + ".");
  }
  say("Pictures are decoded with less confinement than there could be: " + missing + ".");
}

}  // namespace

ConfinedDecoding::ConfinedDecoding() {
  if (kDecodesInProcess) {
    if (confinementIsRequired()) complain("this build decodes in its own process");
    return;
  }
  const KernelConfinement kernel = KernelConfinement::detect();
  if (!kernel.complete()) complain("this kernel has " + missingParts(kernel));
  prepareNamedColorSpaces();  // once for all decoders
  try {
    zygote_.emplace(kernel);
    door_.emplace(*zygote_);
    override_.emplace(*door_);
  } catch (const std::system_error& failure) {
    throw UsageError(std::string("No process for decoding could be made: ") + failure.what());
  }
}

}  // namespace ostra
