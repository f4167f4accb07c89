// Metadata blocks of any content: read, stripped as the engine strips, changed, written, read again.
#include <algorithm>
#include <cstdlib>

#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_shed.h"
#include "platform/imageio/metadata/photoshop.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

/// Takes a block off the front, whose length is in two bytes.
Bytes takeBlock(ByteView& input) {
  if (input.size() < 2) return {};
  const std::size_t size = std::min<std::size_t>(input[0] << 8 | input[1], input.size() - 2);
  const ByteView block = input.subspan(2, size);
  input = input.subspan(2 + size);
  return {block.begin(), block.end()};
}

Carrier carrierOf(ByteView input) {
  Carrier carrier;
  carrier.xmp = takeBlock(input);
  const PhotoshopBlock photoshop = splitPhotoshop(takeBlock(input));
  carrier.iptc = photoshop.iptc.empty() ? takeBlock(input) : photoshop.iptc;
  carrier.photoshopResources = photoshop.resources;
  carrier.exif.assign(input.begin(), input.end());
  return carrier;
}

void change(Properties& properties, std::string_view group, const char* key, Value value) {
  const auto found = properties.tree.find(group);
  if (auto* values = found == properties.tree.end() ? nullptr : found->second.get<Dictionary>()) {
    values->insert_or_assign(key, std::move(value));
  }
}

void strip(Properties& properties) {
  properties.remove(kCGImagePropertyPNGDictionary);
  const auto exif = properties.tree.find(kCGImagePropertyExifDictionary);
  if (exif == properties.tree.end()) return;
  if (auto* values = exif->second.get<Dictionary>())
    values->erase(std::string(kCGImagePropertyExifColorSpace));
}

void roundTrip(ByteView input) {
  Properties properties = readMetadata(carrierOf(input), {});
  strip(properties);
  const bool placeRemoved = properties.remove(kCGImagePropertyGPSDictionary);
  change(properties, kCGImagePropertyTIFFDictionary, "Artist", "somebody else");
  change(properties, kCGImagePropertyExifDictionary, "ExposureTime", 0.01);
  change(properties, kCGImagePropertyIPTCDictionary, "City", "K\u00f6ln");
  properties.tree.insert_or_assign(std::string(kCGImagePropertyOrientation), 6);
  const auto blocks = writeMetadata(properties, {.width = 70000, .height = 3});
  if (!blocks) return;
  Carrier carrier;
  carrier.exif = blocks->exif;
  carrier.xmp = blocks->xmp;
  carrier.iptc = blocks->iptc;
  const Properties again = readMetadata(carrier, {});
  const auto orientation = again.tree.find(kCGImagePropertyOrientation);
  if (orientation == again.tree.end() || !(orientation->second == Value(6))) std::abort();
  if (placeRemoved && again.tree.contains(kCGImagePropertyGPSDictionary)) std::abort();
  if (const auto smaller = shedExif(blocks->exif, blocks->exif.size() / 2)) {
    if (smaller->size() > blocks->exif.size() / 2) std::abort();
  }
}

}  // namespace

}  // namespace ostra

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ostra::roundTrip({data, size});
  return 0;
}
