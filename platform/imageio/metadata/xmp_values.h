#pragma once
#include <optional>
#include <string>

#include "platform/foundation/value.h"
#include "platform/imageio/metadata/xmp_keys.h"
#include "platform/imageio/metadata/xmp_packet.h"

namespace ostra {

/// The value of a property in a form. Nothing when it is empty or not of that form.
std::optional<Value> readXmpValue(const XmpPacket& packet, const XmpProperty& property, XmpForm form);

/// The element that reads back as `value`, for a key that is told only here. Empty when XMP cannot hold it.
std::string xmpElement(const XmpKey& key, const Value& value);

}  // namespace ostra
