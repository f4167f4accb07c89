// An XMP packet of any content: read, filtered, changed; what comes out is a packet again and stays as it is
// when it is filtered once more.
#include <cstdlib>

#include "platform/imageio/metadata/xmp.h"
#include "platform/imageio/metadata/xmp_keys.h"
#include "platform/imageio/metadata/xmp_packet.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

void demand(bool condition) {
  if (!condition) std::abort();
}

bool isPacket(ByteView bytes) { return XmpPacket::parse(bytes).has_value(); }

void demandSound(ByteView before, ByteView after) {
  if (isPacket(before)) demand(after.empty() || isPacket(after));
  if (!isPacket(before) && !before.empty())
    demand(Bytes(before.begin(), before.end()) == Bytes(after.begin(), after.end()));
}

void filter(ByteView packet) {
  const Bytes clean = withoutPixelProperties(packet);
  demandSound(packet, clean);
  demand(withoutPixelProperties(clean) == clean);
  if (const auto parsed = XmpPacket::parse(clean))
    demand(parsed->find(xmp_space::kTiff, "ImageWidth") == nullptr);
  const Bytes turned = withOrientation(clean, 6);
  demandSound(clean, turned);
  demand(withOrientation(turned, 6) == turned);
  demandSound(turned, withPixelSize(turned, 70'000, 3));
  for (const std::string_view group : {kCGImagePropertyExifDictionary, kCGImagePropertyIPTCDictionary})
    demandSound(clean, withoutGroupProperties(clean, group));
}

void change(ByteView packet) {
  Dictionary before;
  readXmp(packet, before);
  Dictionary after = before;
  const Dictionary aux{{"SerialNumber", "<1&2>"}, {"LensInfo", Array{Value(24.0), Value(2.8)}}};
  after.insert_or_assign(std::string(kCGImagePropertyExifAuxDictionary), aux);
  after.erase(std::string(kCGImagePropertyIPTCDictionary));
  const Bytes changed = withTreeChanges(packet, before, after);
  demandSound(packet, changed);
  Dictionary again;
  readXmp(changed, again);
  const auto iptc = again.find(kCGImagePropertyIPTCDictionary);
  if (isPacket(packet)) demand(iptc == again.end());
}

}  // namespace

}  // namespace ostra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::filter({data, size});
  ostra::change({data, size});
  return 0;
}
