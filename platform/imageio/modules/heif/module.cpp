#include <cstring>
#include <string_view>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/heif/heif.h"

// Also in the process that decoders are forked from, where alone the library can still make itself ready.
const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions written{ostra::openHeic, ostra::encodeHeic};
  static constexpr ostra::CodecFunctions sequence{ostra::openHeics, nullptr};
  static constexpr ostra::CodecFunctions other{ostra::openHeif, nullptr};
  if (std::strcmp(version, OSTRA_VERSION) != 0 || !ostra::readyHeifLibrary()) return nullptr;
  const std::string_view asked(type);
  if (asked == "public.heic") return &written;
  if (asked == "public.heics") return &sequence;
  return asked == "public.heif" ? &other : nullptr;
}
