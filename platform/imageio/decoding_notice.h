#pragma once
#include "platform/foundation/url.h"
#include "platform/imageio/codec_door.h"

namespace ostra {

/// Who tells people that a limit stopped a picture, or that its decoder came to grief: the failure itself
/// only says that it could not be decoded. Replaceable through `Service<DecodingNotice>`.
class DecodingNotice {
 public:
  virtual ~DecodingNotice() = default;
  virtual void pictureStopped(const URL& picture, const Fault& fault) = 0;
  /// One line on standard error.
  static DecodingNotice& standard();
};

}  // namespace ostra
