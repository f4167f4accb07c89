#pragma once
#include "platform/foundation/url.h"
#include "platform/imageio/limits.h"

namespace ostra {

/// Who tells people that a limit stopped a picture: the failure itself only says that it could not be
/// decoded. Replaceable through `Service<LimitNotice>`.
class LimitNotice {
 public:
  virtual ~LimitNotice() = default;
  virtual void pictureStopped(const URL& picture, LimitName limit) = 0;
  /// One line on standard error.
  static LimitNotice& standard();
};

}  // namespace ostra
