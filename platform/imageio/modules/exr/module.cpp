#include <cstring>

#include <ImfThreading.h>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/exr/exr.h"

const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions functions{ostra::openExr, nullptr};
  const bool ours =
      std::strcmp(version, OSTRA_VERSION) == 0 && std::strcmp(type, "com.ilm.openexr-image") == 0;
  if (ours) Imf::setGlobalThreadCount(0);
  return ours ? &functions : nullptr;
}
