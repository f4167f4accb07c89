#include "platform/appkit/beep.h"

#include "platform/appkit/renderer.h"
#include "platform/foundation/service.h"

namespace ostra {

void NSBeep() { Service<Renderer>::current().beep(); }

}  // namespace ostra
