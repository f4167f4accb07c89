#include <cstring>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/webp/webp.h"

const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions functions{ostra::openWebp, nullptr};
  const bool ours =
      std::strcmp(version, OSTRA_VERSION) == 0 && std::strcmp(type, "org.webmproject.webp") == 0;
  return ours ? &functions : nullptr;
}
