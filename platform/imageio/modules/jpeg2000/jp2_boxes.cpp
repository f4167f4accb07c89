#include "platform/imageio/modules/jpeg2000/jp2_boxes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/bmff_boxes.h"
#include "platform/imageio/codecs/picture_tree.h"
#include "platform/imageio/modules/jpeg2000/jp2_marks.h"

namespace ostra {
namespace {

bool startsWith(ByteView bytes, const Jp2Mark& mark) {
  return bytes.size() >= mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
}

bool readHeader(ByteView content, Jp2Boxes& boxes) {
  if (content.size() != 14) return false;
  boxes.height = bigEndian32(content, 0);
  boxes.width = bigEndian32(content, 4);
  boxes.components = bigEndian16(content, 8);
  return boxes.width > 0 && boxes.height > 0 && boxes.components > 0;
}

void readColour(ByteView content, Jp2Boxes& boxes) {
  if (content.size() < 3) return;
  boxes.colours.push_back({content[0], static_cast<std::int8_t>(content[1]), content.subspan(3)});
}

bool readDefinitions(ByteView content, Jp2Boxes& boxes) {
  if (content.size() < 2 || content.size() != 2 + std::size_t{6} * bigEndian16(content, 0)) return false;
  for (std::size_t at = 2; at < content.size(); at += 6)
    boxes.definitions.push_back(
        {bigEndian16(content, at), bigEndian16(content, at + 2), bigEndian16(content, at + 4)});
  return true;
}

bool readMappings(ByteView content, Jp2Boxes& boxes) {
  if (content.empty() || content.size() % 4 != 0) return false;
  for (std::size_t at = 0; at < content.size(); at += 4) {
    Jp2Mapping mapping{bigEndian16(content, at), std::nullopt};
    if (content[at + 2] > 1) return false;
    if (content[at + 2] == 1) mapping.column = content[at + 3];
    boxes.mappings.push_back(mapping);
  }
  return true;
}

bool readPalette(ByteView content, Jp2Boxes& boxes) {
  if (content.size() < 3) return false;
  const std::size_t entries = bigEndian16(content, 0), columns = content[2];
  if (entries == 0 || entries > 1024 || columns == 0 || content.size() < 3 + columns) return false;
  Jp2Palette palette;
  for (const std::uint8_t depth : content.subspan(3, columns)) {
    palette.bits.push_back((depth & 0x7Fu) + 1);
    palette.isSigned.push_back((depth & 0x80) != 0);
    if (palette.bits.back() > 16) return false;
  }
  std::size_t at = 3 + columns;
  for (std::size_t i = 0; i < entries * columns; ++i) {
    const std::size_t size = palette.bits[i % columns] > 8 ? 2 : 1;
    if (content.size() - at < size) return false;
    palette.values.push_back(size == 1 ? content[at] : bigEndian16(content, at));
    at += size;
  }
  boxes.palette = std::move(palette);
  return true;
}

// Points a metre as a fraction and a power of ten, down before across.
std::optional<Density> densityOf(ByteView content) {
  constexpr double kMetresAnInch = 0.0254;
  if (content.size() != 10) return std::nullopt;
  const auto inches = [&](std::size_t at, std::size_t power) {
    const double below = bigEndian16(content, at + 2);
    if (below == 0) return 0.0;
    const double step = std::pow(10.0, static_cast<std::int8_t>(content[power])) / below * kMetresAnInch;
    return roundedDensity(bigEndian16(content, at) * step, step);
  };
  const Density density{inches(4, 9), inches(0, 8)};
  const bool isSound = density.x > 0 && density.y > 0 && density.x < 1e6 && density.y < 1e6;
  return isSound ? std::optional(density) : std::nullopt;
}

// The density that the picture is to be shown with stands above the one that it was taken with.
void readResolution(ByteView content, Jp2Boxes& boxes) {
  std::optional<Density> taken, shown;
  BmffWalk walk(content);
  while (const auto box = walk.next()) {
    if (box->type == bmffType("resc")) taken = densityOf(box->content);
    if (box->type == bmffType("resd")) shown = densityOf(box->content);
  }
  boxes.density = shown ? shown : taken;
}

bool readHeaderBoxes(ByteView content, Jp2Boxes& boxes) {
  BmffWalk walk(content);
  while (const auto box = walk.next()) {
    if (box->type == bmffType("ihdr") && !readHeader(box->content, boxes)) return false;
    if (box->type == bmffType("colr")) readColour(box->content, boxes);
    if (box->type == bmffType("cdef") && boxes.definitions.empty() && !readDefinitions(box->content, boxes))
      return false;
    if (box->type == bmffType("cmap") && boxes.mappings.empty() && !readMappings(box->content, boxes))
      return false;
    if (box->type == bmffType("pclr") && !boxes.palette && !readPalette(box->content, boxes)) return false;
    if (box->type == bmffType("res ")) readResolution(box->content, boxes);
  }
  return walk.endedWell() && boxes.components > 0 && boxes.palette.has_value() == !boxes.mappings.empty();
}

void keepFirst(ByteView& slot, ByteView bytes) {
  if (slot.empty()) slot = bytes;
}

void readMarked(ByteView content, Jp2Boxes& boxes) {
  if (content.size() < std::tuple_size_v<Jp2Mark>) return;
  const ByteView block = content.subspan(std::tuple_size_v<Jp2Mark>);
  if (startsWith(content, kJp2Exif) || startsWith(content, kJp2OlderExif)) keepFirst(boxes.exif, block);
  if (startsWith(content, kJp2Xmp)) keepFirst(boxes.xmp, block);
  if (startsWith(content, kJp2Iptc)) keepFirst(boxes.iptc, block);
  if (startsWith(content, kJp2Photoshop)) keepFirst(boxes.photoshop, block);
}

// Of several codestreams the first one is the picture; a header of its own may tell its colours.
void readLayerHeader(ByteView content, Jp2Boxes& boxes) {
  BmffWalk walk(content);
  while (const auto box = walk.next()) {
    if (box->type != bmffType("cgrp")) continue;
    BmffWalk group(box->content);
    while (const auto colour = group.next()) {
      if (colour->type == bmffType("colr")) readColour(colour->content, boxes);
    }
  }
}

}  // namespace

std::optional<Jp2Boxes> readJp2Boxes(ByteView file) {
  Jp2Boxes boxes;
  if (file.size() >= 2 && bigEndian16(file, 0) == 0xFF4F) {
    boxes.codestream = file;
    boxes.codestreams = 1;
    return boxes;
  }
  bool hasHeader = false;
  ByteView layer;
  BmffWalk walk(file);
  while (const auto box = walk.next()) {
    if (box->type == bmffType("jp2h") && !hasHeader) {
      if (!readHeaderBoxes(box->content, boxes)) return std::nullopt;
      hasHeader = true;
    }
    if (box->type == bmffType("jplh")) keepFirst(layer, box->content);
    if (box->type == bmffType("jp2c") && boxes.codestreams++ == 0) boxes.codestream = box->content;
    if (box->type == bmffType("uuid")) readMarked(box->content, boxes);
  }
  if (boxes.colours.empty()) readLayerHeader(layer, boxes);
  return hasHeader && boxes.codestreams > 0 && walk.endedWell() ? std::optional(boxes) : std::nullopt;
}

}  // namespace ostra
