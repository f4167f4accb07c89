#include "platform/foundation/object.h"

namespace ostra {

NSObject::~NSObject() = default;

}  // namespace ostra
