#include <cstring>
#include <string_view>

#include "platform/imageio/codec_module.h"
#include "platform/imageio/modules/avif/avif.h"

const ostra::CodecFunctions* ostra_codec(const char* version, const char* type) {
  static constexpr ostra::CodecFunctions written{ostra::openAvif, ostra::encodeAvif};
  static constexpr ostra::CodecFunctions sequence{ostra::openAvis, nullptr};
  if (std::strcmp(version, OSTRA_VERSION) != 0) return nullptr;
  const std::string_view asked(type);
  if (asked == "public.avif") return &written;
  return asked == "public.avis" ? &sequence : nullptr;
}
