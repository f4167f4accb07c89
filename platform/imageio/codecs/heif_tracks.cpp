#include "platform/imageio/codecs/heif_tracks.h"

#include <algorithm>
#include <optional>

#include "platform/imageio/codecs/bmff_boxes.h"

namespace ostra {
namespace {

std::uint32_t samplesOf(ByteView track) {
  const auto media = findBmffBox(track, bmffType("mdia"));
  if (!media) return 0;
  BmffFields handler(findBmffBox(*media, bmffType("hdlr")).value_or(ByteView()));
  handler.number(8);  // version, flags, and a field of older files
  const std::uint32_t kind = handler.number32();
  if (kind != bmffType("pict") && kind != bmffType("vide")) return 0;
  auto box = media;
  for (const std::uint32_t inner : {bmffType("minf"), bmffType("stbl"), bmffType("stsz")})
    box = box ? findBmffBox(*box, inner) : std::nullopt;
  BmffFields sizes(box.value_or(ByteView()));
  sizes.number(8);  // version, flags, and the size where all have the same
  return sizes.number32();
}

}  // namespace

std::uint32_t heifTrackSamples(ByteView file) {
  std::uint32_t most = 0;
  BmffWalk walk(findBmffBox(file, bmffType("moov")).value_or(ByteView()));
  while (const auto box = walk.next()) {
    if (box->type == bmffType("trak")) most = std::max(most, samplesOf(box->content));
  }
  return most;
}

}  // namespace ostra
