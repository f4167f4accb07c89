// Radiance pictures (Ward, "Real Pixels", 1991, and the program's file format manual): a header of lines, an
// empty line, the size, then scanlines of three mantissas and a common exponent. No place for a profile,
// Exif, XMP, IPTC or density; the order of scanlines is no orientation, it is undone here.
#include <cstring>
#include <utility>

#include "platform/imageio/codecs/decode_clock.h"
#include "platform/imageio/codecs/hdr.h"
#include "platform/imageio/codecs/hdr_header.h"
#include "platform/imageio/codecs/hdr_light.h"
#include "platform/imageio/codecs/hdr_scanlines.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/pixel_memory.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

constexpr std::size_t kBytesPerPixel = 8;

Layout decodedLayout(const HdrHeader& header) {
  Layout layout;
  layout.width = header.width;
  layout.height = header.height;
  layout.bitsPerComponent = 16;
  layout.bitsPerPixel = 8 * kBytesPerPixel;
  layout.bytesPerRow = kBytesPerPixel * layout.width;
  layout.bitmapInfo = static_cast<CGBitmapInfo>(CGImageAlphaInfo::noneSkipLast) | kCGBitmapByteOrder16Little;
  return layout;
}

std::uint8_t* placeOf(const HdrHeader& header, std::uint32_t scanline, std::uint32_t place,
                      std::uint8_t* pixels) {
  std::size_t x = header.alongColumns ? scanline : place, y = header.alongColumns ? place : scanline;
  if (header.fromRight) x = header.width - 1 - x;
  if (header.fromBottom) y = header.height - 1 - y;
  return pixels + kBytesPerPixel * (y * header.width + x);
}

class HdrReader : public CodecReader {
 public:
  HdrReader(FileBytes file, const HdrHeader& header)
      : file_(file), header_(header), opened_{"public.radiance", 1, header.width, header.height, 32, 3} {}

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const Layout layout = decodedLayout(header_);
    const LimitName limit = exceededLimit(limits, layout.width, layout.height, kBytesPerPixel, file_.size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    PixelMemory memory(layout.bytesPerRow * layout.height);
    const HdrLight light(header_);
    HdrScanlines scanlines(header_.pixels);
    std::vector<HdrPixel> scanline(header_.scanlineLength());
    const DecodeClock clock(limits.seconds);
    for (std::uint32_t i = 0; i < header_.scanlines(); ++i) {
      if (!scanlines.read(scanline)) return Fault{FaultKind::damaged};
      for (std::uint32_t place = 0; place < scanline.size(); ++place) {
        const auto [red, green, blue] = light.valuesOf(scanline[place]);
        const std::uint16_t pixel[] = {red, green, blue, 65535};
        std::memcpy(placeOf(header_, i, place, memory.data()), pixel, sizeof pixel);
      }
      if (clock.isOver()) return Fault{FaultKind::limit, LimitName::seconds};
    }
    return Pixels{layout, std::move(memory).share(), light.profile()};
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    if (header_.lines.size() > limits.metadataBytes) return Fault{FaultKind::limit, LimitName::metadataBytes};
    PictureFacts facts;
    facts.width = header_.width;
    facts.height = header_.height;
    facts.depth = 32;
    Dictionary tree = pictureTree(facts, Untagged{});
    tree.emplace(kCGImagePropertyIsFloat, true);
    Carrier carrier;
    for (const HdrLine& line : hdrLines(header_)) {
      if (line.name.empty()) carrier.comments.push_back(line.text);
      if (line.name == "SOFTWARE")
        carrier.texts.push_back({.keyword = "Software",
                                 .text = utf8FromUnknown(line.text),
                                 .language = {},
                                 .translatedKeyword = {}});
    }
    return readMetadata(std::move(carrier), std::move(tree));
  }

 private:
  FileBytes file_;
  HdrHeader header_;
  Opened opened_;
};

}  // namespace

bool matchesHdr(FileBytes head) {
  const std::string_view text = asText(head);
  return text.starts_with("#?RADIANCE") || text.starts_with("#?RGBE");
}

Answer<std::unique_ptr<CodecReader>> openHdr(FileBytes file, const Limits&) {
  const auto header = readHdrHeader(file);
  if (!header) return Fault{FaultKind::damaged};
  return std::make_unique<HdrReader>(file, *header);
}

}  // namespace ostra
