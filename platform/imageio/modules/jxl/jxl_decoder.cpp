#include "platform/imageio/modules/jxl/jxl_decoder.h"

#include <new>

namespace ostra {

JxlDecoderOwner makeJxlDecoder(ByteView file, int events) {
  JxlDecoderOwner decoder(JxlDecoderCreate(nullptr));
  if (decoder == nullptr || JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
      JxlDecoderSetKeepOrientation(decoder.get(), JXL_TRUE) != JXL_DEC_SUCCESS ||
      JxlDecoderSetInput(decoder.get(), file.data(), file.size()) != JXL_DEC_SUCCESS)
    throw std::bad_alloc();
  JxlDecoderCloseInput(decoder.get());
  return decoder;
}

}  // namespace ostra
