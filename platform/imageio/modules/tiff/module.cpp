#include <cstring>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/tiff/tiff.h"

const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions functions{ostra::openTiff, ostra::encodeTiff};
  const bool ours = std::strcmp(version, OSTRA_VERSION) == 0 && std::strcmp(type, "public.tiff") == 0;
  return ours ? &functions : nullptr;
}
