#include "platform/imageio/codecs/png_properties.h"

#include <string>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/dots_a_metre.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/codecs/png_blocks.h"
#include "platform/imageio/codecs/png_text.h"
#include "platform/imageio/property_keys.h"

namespace ostra {
namespace {

void readDensity(ByteView phys, Dictionary& tree, Dictionary& group) {
  const std::int64_t x = bigEndian32(phys, 0), y = bigEndian32(phys, 4);
  if (phys[8] == 1 && x > 0 && y > 0) {
    group.emplace("XPixelsPerMeter", x);
    group.emplace("YPixelsPerMeter", y);
    tree.emplace(kCGImagePropertyDPIWidth, inchesFromMetres(static_cast<double>(x)));
    tree.emplace(kCGImagePropertyDPIHeight, inchesFromMetres(static_cast<double>(y)));
  } else if (phys[8] == 0 && x > 0 && y > 0) {
    group.emplace("PixelAspectRatio", static_cast<double>(y) / static_cast<double>(x));
  }
}

Array chromaticities(ByteView chrm) {
  Array numbers;
  for (std::size_t i = 0; i < 8; ++i) numbers.emplace_back(bigEndian32(chrm, 4 * i) / 100000.0);
  return numbers;
}

std::string timeText(ByteView time) {
  const auto two = [](unsigned number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  return std::to_string(bigEndian16(time, 0)) + ":" + two(time[2]) + ":" + two(time[3]) + " " + two(time[4]) +
         ":" + two(time[5]) + ":" + two(time[6]);
}

// A frame's time on the screen: seconds as a fraction, whose 0 below the line stands for 100. Too short ones
// are shown as a tenth of a second, as the platform does for every animation.
Dictionary frameInfo(ByteView control) {
  constexpr double kShortest = 0.02, kShownInstead = 0.1;
  const double below = bigEndian16(control, 22) == 0 ? 100 : bigEndian16(control, 22);
  const double seconds = bigEndian16(control, 20) / below;
  return {{"UnclampedDelayTime", seconds}, {"DelayTime", seconds < kShortest ? kShownInstead : seconds}};
}

void addFrames(Array frames, const PngHeader& header, Dictionary& group) {
  if (!group.contains("LoopCount") || frames.empty()) return;
  for (const auto& [key, value] : *frames.front().get<Dictionary>()) group.emplace(key, value);
  group.emplace("CanvasPixelWidth", std::int64_t{header.width});
  group.emplace("CanvasPixelHeight", std::int64_t{header.height});
  group.emplace("FrameInfo", std::move(frames));
}

// The group's numbers, and the density, which the top level tells.
Dictionary readGroup(ByteView file, const PngHeader& header, std::uint32_t mostFrames, Dictionary& tree) {
  Dictionary group;
  group.emplace("InterlaceType", header.interlaced ? 1 : 0);
  Array frames;
  PngChunkWalk walk(file);
  while (const auto chunk = walk.next()) {
    const ByteView data = chunk->data;
    const auto is = [&](const char(&type)[5], std::size_t size) {
      return chunk->type == pngType(type) && data.size() == size && chunk->isIntact();
    };
    if (is("gAMA", 4)) group.emplace("Gamma", bigEndian32(data, 0) / 100000.0);
    if (is("sRGB", 1)) group.emplace("sRGBIntent", std::int64_t{data[0]});
    if (is("cHRM", 32)) group.emplace("Chromaticities", chromaticities(data));
    if (is("pHYs", 9)) readDensity(data, tree, group);
    if (is("tIME", 7)) group.emplace("ModificationTime", timeText(data));
    if (is("acTL", 8)) group.emplace("LoopCount", std::int64_t{bigEndian32(data, 4)});
    if (is("fcTL", 26) && frames.size() < mostFrames) frames.emplace_back(frameInfo(data));
  }
  addFrames(std::move(frames), header, group);
  return group;
}

}  // namespace

Properties readPngProperties(ByteView file, const PngStructure& structure, const ProfileRecord& profile,
                             const Limits& limits) {
  const PngHeader& header = structure.header;
  PictureFacts facts;
  facts.width = header.width;
  facts.height = header.height;
  facts.depth = header.isPalette() ? 8 : header.bits;
  facts.model = header.model();
  facts.hasAlpha = structure.hasAlpha();
  facts.isIndexed = header.isPalette();
  Dictionary tree = pictureTree(facts, profile);
  Dictionary group = readGroup(file, header, limits.frames, tree);
  Carrier carrier = readPngBlocks(file, limits.metadataBytes);
  for (const PngText& text : carrier.texts) {
    if (isPngGroupKeyword(text.keyword)) group.emplace(text.keyword, text.text);
  }
  tree.emplace(kCGImagePropertyPNGDictionary, std::move(group));
  return readMetadata(std::move(carrier), std::move(tree));
}

}  // namespace ostra
