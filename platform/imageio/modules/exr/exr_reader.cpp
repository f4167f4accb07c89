// OpenEXR ("Technical Introduction to OpenEXR" and "OpenEXR File Layout", 2021): a version, the attributes of
// each part, tables of the places of its blocks, the blocks. No place for a profile, Exif or IPTC; the
// primaries, the density and facts of the exposure are attributes.
#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>

#include "platform/imageio/modules/exr/exr.h"
#include "platform/imageio/modules/exr/exr_decode.h"
#include "platform/imageio/modules/exr/exr_properties.h"

namespace ostra {
namespace {

/// What the library throws means a damaged file, unless there was no memory.
template <class Call>
auto withoutExceptions(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::length_error&) {
    throw;
  } catch (const std::exception&) {
    return Fault{FaultKind::damaged};
  }
}

class ExrReader : public CodecReader {
 public:
  ExrReader(FileBytes file, const Limits& limits) : file_(file), channels_(pictureChannels(file_.header())) {
    const ExrSize size = sizeOf(file_.header().displayWindow());
    const auto parts = static_cast<std::uint32_t>(file_.parts().parts());
    opened_ = {"com.ilm.openexr-image", std::min(parts, limits.frames), size.width, size.height, 0, 0};
    if (!channels_) return;
    const unsigned colours = channels_->colour == ExrColour::luminance ? 1 : 3;
    opened_.bits = static_cast<std::uint8_t>(channels_->bits);
    opened_.components = static_cast<std::uint8_t>(colours + (channels_->hasAlpha ? 1 : 0));
  }

  const Opened& opened() const override { return opened_; }

  // Deep pixels are material for compositing, not a picture.
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0 || !channels_ || file_.isDeep()) return Fault{FaultKind::damaged};
    return withoutExceptions([&] { return decodeExrPixels(file_, *channels_, limits); });
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    return withoutExceptions(
        [&]() -> Answer<Properties> { return readExrProperties(file_, channels_, limits); });
  }

 private:
  ExrFile file_;
  std::optional<ExrChannels> channels_;
  Opened opened_;
};

}  // namespace

Answer<std::unique_ptr<CodecReader>> openExr(FileBytes file, const Limits& limits) {
  return withoutExceptions(
      [&]() -> Answer<std::unique_ptr<CodecReader>> { return std::make_unique<ExrReader>(file, limits); });
}

}  // namespace ostra
