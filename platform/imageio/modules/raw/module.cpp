#include <string_view>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/raw/raw.h"
#include "platform/imageio/modules/raw/raw_library.h"

const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions functions{ostra::openRaw, nullptr};
  const bool ours =
      std::string_view(version) == OSTRA_VERSION && std::string_view(type).ends_with("raw-image");
  if (ours) ostra::keepToOneThread();
  return ours ? &functions : nullptr;
}
