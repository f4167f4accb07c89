#include "platform/imageio/modules/jpeg2000/opj_decode.h"

#include <new>

namespace ostra {
namespace {

bool isAsClaimed(const opj_image_t& image, const Codestream& codestream) {
  if (image.numcomps != codestream.components.size()) return false;
  for (std::size_t i = 0; i < codestream.components.size(); ++i) {
    const opj_image_comp_t& got = image.comps[i];
    const J2kComponent& claimed = codestream.components[i];
    if (got.data == nullptr || got.w != claimed.width || got.h != claimed.height || got.prec != claimed.bits)
      return false;
  }
  return true;
}

// The header's image is the library's until it is handed over.
OpjImage headerOf(opj_codec_t* codec, opj_stream_t* stream) {
  opj_image_t* image = nullptr;
  const bool done = opj_read_header(stream, codec, &image) == OPJ_TRUE;
  OpjImage owned(image);
  return done ? std::move(owned) : nullptr;
}

}  // namespace

std::uint64_t opjDecodingBytes(const Codestream& codestream) {
  // As its structures of version 2.5 have it, rounded up.
  constexpr std::uint64_t kForTile = 6000, kForTileComponent = 1200, kForSample = sizeof(OPJ_INT32);
  std::uint64_t bytes = codestream.tiles * (kForTile + kForTileComponent * codestream.components.size());
  for (const J2kComponent& component : codestream.components)
    bytes += kForSample * component.width * component.height;
  return bytes;
}

OpjImage decodeCodestream(const Codestream& codestream) {
  OpjComplaints complaints;
  OpjInput input{codestream.bytes};
  const OpjCodec codec(opj_create_decompress(OPJ_CODEC_J2K));
  const OpjStream stream = openForReading(input);
  if (codec == nullptr || stream == nullptr) throw std::bad_alloc();
  listenTo(codec.get(), complaints);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  OpjImage image;
  if (opj_setup_decoder(codec.get(), &parameters) == OPJ_TRUE &&
      opj_decoder_set_strict_mode(codec.get(), OPJ_TRUE) == OPJ_TRUE &&
      // Its own choice follows the environment.
      opj_codec_set_threads(codec.get(), 0) == OPJ_TRUE)
    image = headerOf(codec.get(), stream.get());
  const bool done = image != nullptr && opj_decode(codec.get(), stream.get(), image.get()) == OPJ_TRUE &&
                    opj_end_decompress(codec.get(), stream.get()) == OPJ_TRUE;
  if (complaints.lacksMemory) throw std::bad_alloc();
  // It warns where it fills gaps.
  if (!done || complaints.warned || !isAsClaimed(*image, codestream)) return nullptr;
  return image;
}

}  // namespace ostra
