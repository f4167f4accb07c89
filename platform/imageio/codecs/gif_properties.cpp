#include "platform/imageio/codecs/gif_properties.h"

#include <string>
#include <utility>

#include "platform/imageio/codecs/gif_extensions.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/metadata/carrier.h"
#include "platform/imageio/metadata/exif_structure.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/profile_space.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

// A frame's time on the screen. Too short ones are shown as a tenth of a second, as the platform does for
// every animation.
Dictionary frameInfo(const GifControl& control) {
  constexpr double kShortest = 0.02, kShownInstead = 0.1;
  const double seconds = control.delay / 100.0;
  return {{"UnclampedDelayTime", seconds}, {"DelayTime", seconds < kShortest ? kShownInstead : seconds}};
}

// How often an animation is repeated; the platform tells how often it is shown, and 0 stands for ever in
// both.
std::optional<std::int64_t> loopCount(const GifApplication& application) {
  if (application.name != "NETSCAPE2.0" && application.name != "ANIMEXTS1.0") return std::nullopt;
  const ByteView data = application.data;
  if (data.size() < 4 || data[0] < 3 || data[1] != 1) return std::nullopt;
  const std::int64_t stored = read16(data, 2, ByteOrder::little);
  return stored == 0 ? 0 : stored + 1;
}

class Blocks {
 public:
  explicit Blocks(const Limits& limits) : limits_(limits), left_(limits.metadataBytes) {}

  void take(const GifBlock& block) {
    if (block.frame) {
      takeFrame();
    } else if (block.label == kGifComment && block.isWhole) {
      const Bytes comment = joinedSubBlocks(block.data, left_, LimitName::metadataBytes);
      left_ -= comment.size();
      if (!comment.empty()) carrier_.comments.emplace_back(asText(comment));
    } else if (const auto application = readGifApplication(block)) {
      takeApplication(*application);
    } else if (const auto control = readGifControl(block)) {
      control_ = *control;
    }
  }
  bool isFull() const { return frames_ >= limits_.frames; }

  void tell(const GifStructure& structure, Dictionary& tree) {
    group_.emplace("HasGlobalColorMap", !structure.screen.palette.empty());
    const ByteView palette = structure.palette();
    if (!palette.empty()) group_.emplace("ImageColorMap", Bytes(palette.begin(), palette.end()));
    group_.emplace("CanvasPixelWidth", std::int64_t{structure.width});
    group_.emplace("CanvasPixelHeight", std::int64_t{structure.height});
    if (frames_ > 1 && !info_.empty()) group_.emplace("FrameInfo", std::move(info_));
    tree.emplace(kCGImagePropertyGIFDictionary, std::move(group_));
  }
  Carrier carrier() && { return std::move(carrier_); }

 private:
  void takeFrame() {
    ++frames_;
    Dictionary info = frameInfo(control_.value_or(GifControl()));
    if (frames_ == 1 && control_) {
      for (const auto& [key, value] : info) group_.emplace(key, value);
    }
    info_.emplace_back(std::move(info));
    control_.reset();
  }
  void takeApplication(const GifApplication& application) {
    if (application.name == kGifXmp && carrier_.xmp.empty()) {
      carrier_.xmp = readGifXmp(application.data, left_);
      left_ -= carrier_.xmp.size();
    }
    if (const auto count = loopCount(application)) group_.emplace("LoopCount", *count);
  }

  const Limits& limits_;
  std::size_t left_;
  Carrier carrier_;
  Dictionary group_;
  Array info_;
  std::optional<GifControl> control_;
  std::uint32_t frames_ = 0;
};

}  // namespace

ProfileRecord readGifColour(ByteView file, const GifStructure& structure, const Limits& limits) {
  GifBlockWalk walk(file, structure.screen);
  while (const auto block = walk.next()) {
    const auto application = readGifApplication(*block);
    if (!application || application->name != kGifProfile) continue;
    ProfileRecord profile =
        IccProfile{joinedSubBlocks(application->data, limits.profileBytes, LimitName::profileBytes)};
    if (statedSpace(profile, CGColorSpaceModel::rgb) != nullptr) return profile;
    break;
  }
  return Untagged{};
}

Properties readGifProperties(ByteView file, const GifStructure& structure, const Limits& limits) {
  PictureFacts facts;
  facts.width = structure.width;
  facts.height = structure.height;
  facts.depth = 8;
  facts.hasAlpha = structure.hasAlpha();
  facts.isIndexed = true;
  Dictionary tree = pictureTree(facts, readGifColour(file, structure, limits));
  Blocks blocks(limits);
  GifBlockWalk walk(file, structure.screen);
  while (const auto block = walk.next()) {
    blocks.take(*block);
    if (blocks.isFull()) break;
  }
  blocks.tell(structure, tree);
  Carrier carrier = std::move(blocks).carrier();
  // Dots to the same length: a pixel that is wider than high has fewer of them across.
  constexpr std::uint32_t kSquare = 64, kLeast = 15;
  if (structure.screen.aspect != 0)
    carrier.pixelAspect = PixelAspect{kSquare, structure.screen.aspect + kLeast};
  return readMetadata(std::move(carrier), std::move(tree));
}

}  // namespace ostra
