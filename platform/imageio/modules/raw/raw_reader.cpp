// Cameras' raw files: TIFF with directories of sensor data (TIFF/EP, ISO 12234-2; DNG 1.6), or containers of
// the makers' own. One picture; previews are none. Developed with the camera's white balance and without a
// guess at brightness; never turned, the orientation is told.
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/modules/raw/raw.h"
#include "platform/imageio/modules/raw/raw_container.h"
#include "platform/imageio/modules/raw/raw_library.h"
#include "platform/imageio/modules/raw/raw_metadata.h"
#include "platform/imageio/modules/raw/raw_mosaic.h"
#include "platform/imageio/modules/raw/raw_pixels.h"

namespace ostra {
namespace {

/// How far decompression may look behind the end of a whole file: a few bytes of bits, or a block of
/// Panasonic's. Minolta does not compress.
std::uint64_t lookaheadOf(RawKind kind) {
  if (kind == RawKind::mrw) return 0;
  return kind == RawKind::rw2 ? 0x4000 : 16;
}

class RawReader : public CodecReader {
 public:
  RawReader(FileBytes file, RawContainer container, const Limits& limits)
      : file_(file), container_(std::move(container)), library_(file, limits) {}

  std::optional<Fault> open() {
    if (const auto fault = library_.open()) return fault;
    const auto [width, height] = library_.developedSize();
    const unsigned colours = isGray() ? 1 : 3;
    opened_ = {container_.type, 1, width, height, 16, static_cast<std::uint8_t>(colours)};
    return std::nullopt;
  }

  const Opened& opened() const override { return opened_; }

  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const libraw_image_sizes_t& sizes = library_->imgdata.sizes;
    const LimitName limit =
        exceededLimit(limits, sizes.raw_width, sizes.raw_height, library_.bytesForAPixel(), file_.size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    if (!container_.isWhole) return Fault{FaultKind::damaged};
    // The size was asked of the other one, which can go no further then.
    RawLibrary library(file_, limits);
    if (const auto fault = library.open()) return *fault;
    if (const auto fault = library.develop(lookaheadOf(container_.kind))) return *fault;
    return takeRawPixels(library, isGray());
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    PictureFacts facts;
    facts.width = opened_.width;
    facts.height = opened_.height;
    facts.depth = 16;
    if (isGray()) facts.model = CGColorSpaceModel::monochrome;
    return readMetadata(readRawBlocks(file_, container_, library_, limits),
                        pictureTree(facts, rawProfile(isGray())));
  }

 private:
  bool isGray() const { return library_->imgdata.idata.colors == 1; }

  FileBytes file_;
  RawContainer container_;
  RawLibrary library_;
  Opened opened_;
};

}  // namespace

Answer<std::unique_ptr<CodecReader>> openRaw(FileBytes file, const Limits& limits) {
  auto container = readRawContainer(file);
  if (!container) return Fault{FaultKind::notImage};
  if (hasBoundlessMosaic(file)) return Fault{FaultKind::damaged};
  auto reader = std::make_unique<RawReader>(file, std::move(*container), limits);
  // What holds raw pixels is not handed on: another reader would take a preview for the picture.
  if (const auto fault = reader->open()) return *fault;
  return reader;
}

}  // namespace ostra
