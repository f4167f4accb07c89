#pragma once
#include "platform/foundation/bytes.h"
#include "platform/foundation/value.h"

namespace ostra {

/// The value of a property list in XML or binary form. Dates and identifiers, which no setting of ours has,
/// are left out. Throws `NSError` (259) for anything else.
Value readPropertyList(ByteView data);
/// The XML form.
Bytes writePropertyList(const Value& value);

}  // namespace ostra
