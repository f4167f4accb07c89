#include <cstring>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/jpeg2000/jpeg2000.h"

const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions functions{ostra::openJpeg2000, ostra::encodeJpeg2000};
  const bool ours = std::strcmp(version, OSTRA_VERSION) == 0 && std::strcmp(type, "public.jpeg-2000") == 0;
  return ours ? &functions : nullptr;
}
