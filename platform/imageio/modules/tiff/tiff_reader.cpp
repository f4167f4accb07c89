#include <memory>

#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/modules/tiff/tiff.h"
#include "platform/imageio/modules/tiff/tiff_decode.h"
#include "platform/imageio/modules/tiff/tiff_directory.h"
#include "platform/imageio/modules/tiff/tiff_properties.h"

namespace ostra {
namespace {

class TiffReader : public CodecReader {
 public:
  TiffReader(std::unique_ptr<TiffFile> file, const TiffDirectory& directory, std::uint32_t count)
      : file_(std::move(file)), directory_(directory) {
    opened_.type = "public.tiff";
    opened_.count = count;
    opened_.width = directory.width;
    opened_.height = directory.height;
    opened_.bits = static_cast<std::uint8_t>(directory.bits);
    opened_.components = static_cast<std::uint8_t>(directory.samples);
  }

  const Opened& opened() const override { return opened_; }
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    auto answer = decodeTiffPixels(*file_, directory_, limits);
    if (auto* pixels = std::get_if<Pixels>(&answer)) {
      if (directory_.colour != TiffColour::lab) pixels->profile = readTiffProfile(*file_, directory_, limits);
    }
    return answer;
  }
  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return readTiffProperties(*file_, directory_, limits);
  }

 private:
  std::unique_ptr<TiffFile> file_;
  TiffDirectory directory_;
  Opened opened_;
};

/// The directories of the chain but for those that are marked as smaller copies; leaves the first current.
std::uint32_t countPages(const TiffFile& file, std::uint32_t most) {
  std::uint32_t count = 0;
  do {
    const bool copy = (file.field<std::uint32_t>(TIFFTAG_SUBFILETYPE) & FILETYPE_REDUCEDIMAGE) != 0;
    if (!copy) ++count;
  } while (count < most && TIFFReadDirectory(file.get()) != 0);
  return TIFFSetDirectory(file.get(), 0) != 0 ? std::max(count, 1u) : 0;
}

}  // namespace

Answer<std::unique_ptr<CodecReader>> openTiff(FileBytes bytes, const Limits& limits) {
  auto file = TiffFile::open(bytes);
  if (file == nullptr) return Fault{FaultKind::damaged};
  const std::uint32_t count = countPages(*file, limits.frames);
  const auto directory = readTiffDirectory(*file);
  if (count == 0 || !directory) return Fault{FaultKind::damaged};
  return std::make_unique<TiffReader>(std::move(file), *directory, count);
}

}  // namespace ostra
