#include "platform/imageio/modules/jxl/jxl_boxes.h"

#include <algorithm>
#include <string_view>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/exif_mark.h"
#include "platform/imageio/modules/jxl/jxl_decoder.h"

namespace ostra {
namespace {

/// Grows as the library fills it.
class BoxMemory {
 public:
  explicit BoxMemory(std::size_t limit) : limit_(limit) {}

  void begin(JxlDecoder* decoder) {
    constexpr std::size_t kFirst = 1 << 14;
    bytes_.assign(kFirst, 0);
    filled_ = 0;
    offer(decoder);
  }
  void grow(JxlDecoder* decoder) {
    takeBack(decoder);
    if (filled_ > limit_) throw LimitExceeded{LimitName::metadataBytes};
    bytes_.resize(2 * bytes_.size());
    offer(decoder);
  }
  Bytes end(JxlDecoder* decoder) {
    takeBack(decoder);
    bytes_.resize(filled_);
    if (filled_ > limit_) throw LimitExceeded{LimitName::metadataBytes};
    limit_ -= filled_;
    return std::move(bytes_);
  }

 private:
  void offer(JxlDecoder* decoder) {
    JxlDecoderSetBoxBuffer(decoder, bytes_.data() + filled_, bytes_.size() - filled_);
  }
  void takeBack(JxlDecoder* decoder) { filled_ = bytes_.size() - JxlDecoderReleaseBoxBuffer(decoder); }

  std::size_t limit_;
  Bytes bytes_;
  std::size_t filled_ = 0;
};

// The place of the block is told in front of it.
Bytes exifOf(const Bytes& box) {
  constexpr std::size_t kNumber = 4;
  if (box.size() < kNumber) return {};
  const std::size_t offset = bigEndian32(box, 0);
  if (offset >= box.size() - kNumber) return {};
  const ByteView block = withoutExifMark(ByteView(box).subspan(kNumber + offset));
  return Bytes(block.begin(), block.end());
}

enum class Kind { other, exif, xmp };

Kind kindOf(JxlDecoder* decoder) {
  JxlBoxType type;
  if (JxlDecoderGetBoxType(decoder, type, JXL_TRUE) != JXL_DEC_SUCCESS) return Kind::other;
  const std::string_view name(type, sizeof type);
  return name == "Exif" ? Kind::exif : name == "xml " ? Kind::xmp : Kind::other;
}

}  // namespace

Carrier readJxlBoxes(ByteView file, std::size_t limit) {
  Carrier carrier;
  const JxlDecoderOwner decoder = makeJxlDecoder(file, JXL_DEC_BOX);
  if (JxlDecoderSetDecompressBoxes(decoder.get(), JXL_TRUE) != JXL_DEC_SUCCESS) return carrier;
  BoxMemory memory(limit);
  Kind kind = Kind::other;
  const auto keep = [&] {
    if (kind == Kind::exif) carrier.exif = exifOf(memory.end(decoder.get()));
    if (kind == Kind::xmp) carrier.xmp = memory.end(decoder.get());
    kind = Kind::other;
  };
  while (true) {
    const JxlDecoderStatus status = JxlDecoderProcessInput(decoder.get());
    if (status == JXL_DEC_BOX_NEED_MORE_OUTPUT) {
      memory.grow(decoder.get());
      continue;
    }
    if (status != JXL_DEC_BOX && status != JXL_DEC_SUCCESS) return carrier;
    keep();
    if (status == JXL_DEC_SUCCESS) return carrier;
    kind = kindOf(decoder.get());
    // The first of a kind counts.
    if ((kind == Kind::exif && !carrier.exif.empty()) || (kind == Kind::xmp && !carrier.xmp.empty()))
      kind = Kind::other;
    if (kind != Kind::other) memory.begin(decoder.get());
  }
}

}  // namespace ostra
