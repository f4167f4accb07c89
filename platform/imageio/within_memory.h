#pragma once
#include <new>
#include <stdexcept>

#include "platform/imageio/codec_door.h"

namespace ostra {

/// The answer of a call to a codec. A file that goes beyond a limit, or whose numbers ask for more memory
/// than there is, fails alone.
template <class Call>
auto withinMemory(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const LimitExceeded& exceeded) {
    return Fault{FaultKind::limit, exceeded.limit};
  } catch (const std::bad_alloc&) {
    return Fault{FaultKind::limit, LimitName::decodedBytes};
  } catch (const std::length_error&) {
    return Fault{FaultKind::limit, LimitName::decodedBytes};
  }
}

}  // namespace ostra
