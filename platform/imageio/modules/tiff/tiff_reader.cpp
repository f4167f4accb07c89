#include <memory>
#include <utility>

#include "platform/imageio/modules/tiff/tiff.h"
#include "platform/imageio/modules/tiff/tiff_decode.h"
#include "platform/imageio/modules/tiff/tiff_pages.h"
#include "platform/imageio/modules/tiff/tiff_properties.h"

namespace ostra {
namespace {

class TiffReader : public CodecReader {
 public:
  TiffReader(std::unique_ptr<TiffFile> file, TiffPicture picture, std::uint32_t count)
      : file_(std::move(file)), picture_(std::move(picture)) {
    opened_.type = "public.tiff";
    opened_.count = count;
    opened_.width = picture_.directory.width;
    opened_.height = picture_.directory.height;
    opened_.bits = static_cast<std::uint8_t>(picture_.directory.bits);
    opened_.components = static_cast<std::uint8_t>(picture_.directory.samples);
  }

  const Opened& opened() const override { return opened_; }
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return decodeTiffPixels(*file_, picture_.directory, readTiffProfile(picture_, limits), limits);
  }
  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return readTiffProperties(picture_, limits);
  }

 private:
  std::unique_ptr<TiffFile> file_;
  TiffPicture picture_;
  Opened opened_;
};

}  // namespace

Answer<std::unique_ptr<CodecReader>> openTiff(FileBytes bytes, const Limits& limits) {
  const auto structure = TiffStructure::open(bytes);
  if (!structure || isCameraRaw(*structure)) return Fault{FaultKind::notImage};
  const auto pages = readTiffPages(*structure, limits.frames);
  if (!pages) return Fault{FaultKind::damaged};
  auto entries = structure->directoryAt(pages->picture);
  auto file = TiffFile::open(bytes, pages->picture, limits.decodedBytes);
  const auto directory = file != nullptr ? readTiffDirectory(*file) : std::nullopt;
  if (!entries || !directory) return Fault{FaultKind::damaged};
  return std::make_unique<TiffReader>(
      std::move(file), TiffPicture{*structure, pages->picture, std::move(*entries), *directory},
      pages->count);
}

}  // namespace ostra
