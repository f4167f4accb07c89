#include <algorithm>
#include <string>
#include <utility>

#include "platform/imageio/codecs/ico.h"
#include "platform/imageio/codecs/ico_directory.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/codecs/plain_pixels.h"
#include "platform/imageio/codecs/png.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/pixel_memory.h"

namespace ostra {
namespace {

std::uint64_t maskRowBytes(std::uint32_t width) { return (std::uint64_t{width} + 31) / 32 * 4; }

bool hasMask(const IcoBitmap& bitmap) {
  const BmpHeader& header = bitmap.colours.header;
  const std::uint64_t lastRow = (std::uint64_t{header.width} + 7) / 8;
  return bitmap.mask.size() >= maskRowBytes(header.width) * (header.height - 1) + lastRow;
}

std::uint8_t* alphaAt(const Layout& layout, std::uint8_t* pixels, std::size_t x, std::size_t y) {
  const std::size_t sample = layout.bitsPerComponent / 8u;
  return pixels + y * layout.bytesPerRow + x * 4 * sample + 3 * sample;
}

// Whether any pixel is more than transparent.
bool usesAlpha(const Layout& layout, std::uint8_t* pixels) {
  for (std::size_t y = 0; y < layout.height; ++y) {
    for (std::size_t x = 0; x < layout.width; ++x) {
      const std::uint8_t* alpha = alphaAt(layout, pixels, x, y);
      if (alpha[0] != 0 || (layout.bitsPerComponent == 16 && alpha[1] != 0)) return true;
    }
  }
  return false;
}

// 1 is transparent. What such a pixel would do to the screen behind it, nobody knows any more.
void applyMask(const IcoBitmap& bitmap, const Layout& layout, std::uint8_t* pixels) {
  const std::uint64_t rowBytes = maskRowBytes(layout.width);
  for (std::size_t y = 0; y < layout.height; ++y) {
    const std::size_t row = (layout.height - 1 - y) * rowBytes;
    for (std::size_t x = 0; x < layout.width; ++x) {
      const bool transparent = (bitmap.mask[row + x / 8] >> (7 - x % 8) & 1) != 0;
      std::uint8_t* alpha = alphaAt(layout, pixels, x, y);
      for (std::size_t i = 0; i < layout.bitsPerComponent / 8u; ++i)
        alpha[i] = transparent ? std::uint8_t{0} : std::uint8_t{255};
    }
  }
}

Answer<Pixels> decodeBitmap(const IcoBitmap& bitmap, const Limits& limits, std::size_t fileSize) {
  auto planned = bmpLayout(bitmap.colours, CGColorSpaceModel::rgb, limits, fileSize);
  if (const auto* fault = std::get_if<Fault>(&planned)) return *fault;
  const Layout plain = std::get<Layout>(planned);
  const Layout layout = plainLayout(plain.width, plain.height, plain.bitsPerComponent, plain.model, true);
  PixelMemory memory(layout.bytesPerRow * layout.height);
  if (!decodeBmpInto(bitmap.colours, layout, memory.data())) return Fault{FaultKind::damaged};
  if (!bitmap.colours.header.hasAlpha() || !usesAlpha(layout, memory.data())) {
    if (!hasMask(bitmap)) return Fault{FaultKind::damaged};
    applyMask(bitmap, layout, memory.data());
  }
  return Pixels{layout, std::move(memory).share(), Untagged{}};
}

class IcoReader : public CodecReader {
 public:
  IcoReader(FileBytes file, std::string_view type, IcoEntry entry, std::unique_ptr<CodecReader> png)
      : file_(file), entry_(std::move(entry)), png_(std::move(png)) {
    opened_ = {.type = std::string(type),
               .count = countOfIco(file),
               .width = entry_.width,
               .height = entry_.height,
               .bits = 8,
               .components = 4};
    // One that is animated is more than one picture.
    if (png_ != nullptr) opened_.count = std::max(opened_.count, png_->opened().count);
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    if (png_ != nullptr) return png_->decode(0, limits);
    return decodeBitmap(std::get<IcoBitmap>(entry_.contents), limits, file_.size());
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    if (png_ != nullptr) return png_->properties(0, limits);
    PictureFacts facts;
    facts.width = entry_.width;
    facts.height = entry_.height;
    facts.depth = std::get<IcoBitmap>(entry_.contents).colours.storedBits();
    facts.hasAlpha = true;
    facts.isIndexed = entry_.bits <= 8;
    return readMetadata(Carrier{}, pictureTree(facts, Untagged{}));
  }

 private:
  FileBytes file_;
  IcoEntry entry_;
  std::unique_ptr<CodecReader> png_;  // of an entry that is one
  Opened opened_;
};

Answer<std::unique_ptr<CodecReader>> openKind(FileBytes file, std::string_view type, const Limits& limits) {
  if (file.size() < kIcoDirectoryHead) return Fault{FaultKind::damaged};
  auto entry = largestIcoEntry(file);
  if (!entry) return Fault{FaultKind::damaged};
  std::unique_ptr<CodecReader> png;
  if (const auto* contents = std::get_if<ByteView>(&entry->contents)) {
    auto opened = openPng(*contents, limits);
    if (const auto* fault = std::get_if<Fault>(&opened)) return *fault;
    png = std::get<std::unique_ptr<CodecReader>>(std::move(opened));
  }
  return std::make_unique<IcoReader>(file, type, std::move(*entry), std::move(png));
}

}  // namespace

bool matchesIco(FileBytes head) { return beginsIco(head, IcoKind::icon); }
bool matchesCur(FileBytes head) { return beginsIco(head, IcoKind::cursor); }

Answer<std::unique_ptr<CodecReader>> openIco(FileBytes file, const Limits& limits) {
  return openKind(file, "com.microsoft.ico", limits);
}
Answer<std::unique_ptr<CodecReader>> openCur(FileBytes file, const Limits& limits) {
  return openKind(file, "com.microsoft.cur", limits);
}

}  // namespace ostra
