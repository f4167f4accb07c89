#pragma once
#include <memory>

#include <jxl/decode.h>

#include "platform/foundation/bytes.h"

namespace ostra {

struct JxlDeleter {
  void operator()(JxlDecoder* decoder) const { JxlDecoderDestroy(decoder); }
};
using JxlDecoderOwner = std::unique_ptr<JxlDecoder, JxlDeleter>;

/// A decoder that was given the whole file and tells of these events. It has no second thread, leaves pixels
/// as they lie, and opacity as it is. The file must outlive it. Throws `std::bad_alloc`.
JxlDecoderOwner makeJxlDecoder(ByteView file, int events);

}  // namespace ostra
