#include <algorithm>
#include <memory>

#include <webp/decode.h>
#include <webp/demux.h>

#include "platform/imageio/codec.h"
#include "platform/imageio/codecs/exif_colour.h"
#include "platform/imageio/codecs/exif_mark.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/modules/webp/webp.h"
#include "platform/imageio/pixel_memory.h"
#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

struct DeleteDemuxer {
  void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

struct DeleteAnimation {
  void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};
using Animation = std::unique_ptr<WebPAnimDecoder, DeleteAnimation>;

WebPData dataOf(FileBytes file) { return {file.data(), file.size()}; }

/// The content of the first chunk of a name; empty when there is none.
ByteView chunkOf(const Demuxer& demuxer, const char* name) {
  WebPChunkIterator found{};
  ByteView content;
  if (WebPDemuxGetChunk(demuxer.get(), name, 1, &found) != 0) content = {found.chunk.bytes, found.chunk.size};
  WebPDemuxReleaseChunkIterator(&found);
  return content;
}

Bytes limited(ByteView content, std::size_t most, LimitName limit) {
  if (content.size() > most) throw LimitExceeded{limit};
  return Bytes(content.begin(), content.end());
}

class WebpReader : public CodecReader {
 public:
  WebpReader(FileBytes file, Demuxer demuxer) : file_(file), demuxer_(std::move(demuxer)) {
    opened_.type = "org.webmproject.webp";
    opened_.count = feature(WEBP_FF_FRAME_COUNT);
    opened_.width = feature(WEBP_FF_CANVAS_WIDTH);
    opened_.height = feature(WEBP_FF_CANVAS_HEIGHT);
    opened_.bits = 8;
    opened_.components = hasAlpha() ? 4 : 3;
  }

  const Opened& opened() const override { return opened_; }

  // Of an animation the first frame, on the canvas.
  Answer<Pixels> decode(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    const Layout layout = this->layout();
    const LimitName limit =
        exceededLimit(limits, layout.width, layout.height, bytesForAPixel(), file_.size());
    if (limit != LimitName::none) return Fault{FaultKind::limit, limit};
    PixelMemory memory(layout.bytesPerRow * layout.height);
    const bool done = isAnimation() ? decodeFirstFrame(memory) : decodeStill(memory, layout);
    if (!done) return Fault{FaultKind::damaged};
    return Pixels{layout, std::move(memory).share(), profile(limits)};
  }

  Answer<Properties> properties(std::uint32_t index, const Limits& limits) override {
    if (index != 0) return Fault{FaultKind::damaged};
    PictureFacts facts;
    facts.width = opened_.width;
    facts.height = opened_.height;
    facts.depth = 8;
    facts.hasAlpha = hasAlpha();
    Carrier carrier;
    carrier.exif =
        limited(withoutExifMark(chunkOf(demuxer_, "EXIF")), limits.metadataBytes, LimitName::metadataBytes);
    carrier.xmp = limited(chunkOf(demuxer_, "XMP "), limits.metadataBytes, LimitName::metadataBytes);
    return readMetadata(std::move(carrier), pictureTree(facts, profile(limits)));
  }

 private:
  std::uint32_t feature(WebPFormatFeature feature) const { return WebPDemuxGetI(demuxer_.get(), feature); }
  bool isAnimation() const { return (feature(WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0; }
  bool hasAlpha() const { return (feature(WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG) != 0; }

  Layout layout() const {
    Layout layout;
    layout.width = opened_.width;
    layout.height = opened_.height;
    layout.bytesPerRow = std::size_t{opened_.width} * 4;
    layout.bitmapInfo =
        static_cast<CGBitmapInfo>(hasAlpha() ? CGImageAlphaInfo::last : CGImageAlphaInfo::noneSkipLast);
    return layout;
  }

  /// The library keeps a lossless picture, or an animation's two canvases, beside our memory.
  std::uint64_t bytesForAPixel() const { return isAnimation() ? 12 : 8; }

  ProfileRecord profile(const Limits& limits) const {
    const ByteView icc = chunkOf(demuxer_, "ICCP");
    ProfileRecord profile = Untagged{};
    if (!icc.empty()) profile = IccProfile{limited(icc, limits.profileBytes, LimitName::profileBytes)};
    if (statedSpace(profile, CGColorSpaceModel::rgb) != nullptr) return profile;
    return exifColour(withoutExifMark(chunkOf(demuxer_, "EXIF")));
  }

  bool decodeStill(PixelMemory& memory, const Layout& layout) const {
    WebPIterator frame{};
    WebPDecoderConfig config;
    if (WebPInitDecoderConfig(&config) == 0 || WebPDemuxGetFrame(demuxer_.get(), 1, &frame) == 0)
      return false;
    config.output.colorspace = MODE_RGBA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA = {memory.data(), static_cast<int>(layout.bytesPerRow), memory.size()};
    const bool done = frame.complete != 0 && frame.width == static_cast<int>(layout.width) &&
                      frame.height == static_cast<int>(layout.height) &&
                      WebPDecode(frame.fragment.bytes, frame.fragment.size, &config) == VP8_STATUS_OK;
    WebPDemuxReleaseIterator(&frame);
    return done;
  }

  bool decodeFirstFrame(PixelMemory& memory) const {
    WebPAnimDecoderOptions options;
    if (WebPAnimDecoderOptionsInit(&options) == 0) return false;
    options.color_mode = MODE_RGBA;
    options.use_threads = 0;
    const WebPData data = dataOf(file_);
    const Animation decoder(WebPAnimDecoderNew(&data, &options));
    std::uint8_t* canvas = nullptr;
    int time = 0;
    if (decoder == nullptr || WebPAnimDecoderGetNext(decoder.get(), &canvas, &time) == 0) return false;
    std::copy_n(canvas, memory.size(), memory.data());
    return true;
  }

  FileBytes file_;
  Demuxer demuxer_;
  Opened opened_;
};

}  // namespace

Answer<std::unique_ptr<CodecReader>> openWebp(FileBytes file, const Limits&) {
  const WebPData data = dataOf(file);
  Demuxer demuxer(WebPDemux(&data));  // null for a file that is cut off
  if (demuxer == nullptr) return Fault{FaultKind::damaged};
  return std::make_unique<WebpReader>(file, std::move(demuxer));
}

}  // namespace ostra
