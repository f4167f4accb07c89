#include "platform/imageio/codecs/heif_turned.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/imageio/codecs/big_endian.h"
#include "platform/imageio/codecs/heif_meta.h"

namespace ostra {
namespace {

constexpr std::uint8_t kEssential = 0x80;
constexpr std::size_t kHead = 8;

void append(Bytes& to, ByteView bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

void appendBox(Bytes& to, std::uint32_t type, ByteView content) {
  appendBigEndian32(to, static_cast<std::uint32_t>(kHead + content.size()));
  appendBigEndian32(to, type);
  append(to, content);
}

/// What is put into the file, and what that moves.
struct Insertion {
  std::uint32_t primary = 0;
  std::vector<std::uint8_t> indices;  // of the new properties
  Bytes properties;
  std::size_t size = 0;
};

Insertion insertionFor(const HeifTurn& turn, const HeifMeta& meta) {
  Insertion insertion;
  insertion.primary = meta.primary;
  const auto add = [&](std::uint32_t type, std::uint8_t value) {
    const std::size_t index = meta.properties.size() + insertion.indices.size() + 1;
    insertion.indices.push_back(static_cast<std::uint8_t>(kEssential | index));
    appendBox(insertion.properties, type, {&value, 1});
  };
  if (turn.quarters != 0) add(bmffType("irot"), turn.quarters);
  if (turn.mirror) add(bmffType("imir"), *turn.mirror);
  insertion.size = insertion.properties.size() + insertion.indices.size();
  return insertion;
}

// Version 0 without large indices: a number of items, each with the number of its properties and these.
std::optional<Bytes> associations(ByteView content, const Insertion& insertion) {
  BmffFields fields(content);
  if (fields.number32() != 0) return std::nullopt;
  Bytes result(content.begin(), content.begin() + 8);
  for (std::uint32_t items = fields.number32(); items > 0 && fields.isIntact(); --items) {
    const std::uint16_t id = fields.number16();
    const std::size_t count = fields.byte();
    if (count > fields.rest().size()) return std::nullopt;
    const bool primary = id == insertion.primary;
    result.push_back(static_cast<std::uint8_t>(id >> 8));
    result.push_back(static_cast<std::uint8_t>(id));
    result.push_back(static_cast<std::uint8_t>(count + (primary ? insertion.indices.size() : 0)));
    append(result, fields.rest().first(count));
    if (primary) append(result, insertion.indices);
    fields = BmffFields(fields.rest().subspan(count));
  }
  return fields.isIntact() && result.size() == content.size() + insertion.indices.size()
             ? std::optional(std::move(result))
             : std::nullopt;
}

// Version 0 or 1, which knows other places than the file, with numbers of 32 bits and an unused common base.
std::optional<Bytes> locations(ByteView content, const Insertion& insertion) {
  BmffFields fields(content);
  const std::uint32_t version = fields.number32() >> 24;
  if (version > 1 || (fields.number16() & 0xFF0F) != 0x4400) return std::nullopt;
  const std::size_t base = content[5] >> 4, kind = version == 0 ? 0 : 2;
  Bytes result(content.begin(), content.end());
  std::size_t at = 8;
  for (unsigned items = fields.number16(); items > 0; --items) {
    const std::size_t head = 6 + kind + base;
    if (content.size() < at + head) return std::nullopt;
    const bool inFile = kind == 0 || bigEndian16(content, at + 2) == 0;
    const std::size_t extents = bigEndian16(content, at + head - 2);
    at += head;
    if (content.size() < at + 8 * extents) return std::nullopt;
    for (std::size_t i = 0; i < extents; ++i, at += 8) {
      if (!inFile) continue;
      Bytes moved;
      appendBigEndian32(moved, bigEndian32(content, at) + static_cast<std::uint32_t>(insertion.size));
      std::copy(moved.begin(), moved.end(), result.begin() + static_cast<std::ptrdiff_t>(at));
    }
  }
  return result;
}

/// The boxes with those changed that the insertion changes, at any depth.
std::optional<Bytes> rebuilt(ByteView boxes, const Insertion& insertion) {
  Bytes result;
  BmffWalk walk(boxes);
  while (const auto box = walk.next()) {
    std::optional<Bytes> content;
    switch (box->type) {
      case bmffType("iprp"):
        content = rebuilt(box->content, insertion);
        break;
      case bmffType("ipco"):
        content.emplace(box->content.begin(), box->content.end());
        append(*content, insertion.properties);
        break;
      case bmffType("ipma"):
        content = associations(box->content, insertion);
        break;
      case bmffType("iloc"):
        content = locations(box->content, insertion);
        break;
      default:
        content.emplace(box->content.begin(), box->content.end());
    }
    if (!content) return std::nullopt;
    appendBox(result, box->type, *content);
  }
  return result;
}

}  // namespace

std::optional<Bytes> withHeifTurn(ByteView file, const HeifTurn& turn) {
  const auto metaBox = findBmffBox(file, bmffType("meta"));
  const auto meta = metaBox ? readHeifMeta(*metaBox) : std::nullopt;
  if (!meta || meta->properties.size() > 120) return std::nullopt;
  const Insertion insertion = insertionFor(turn, *meta);
  const auto boxes = rebuilt(metaBox->subspan(4), insertion);
  if (!boxes) return std::nullopt;
  const auto start = static_cast<std::size_t>(metaBox->data() - file.data());
  const std::size_t grown = boxes->size() + 4 - metaBox->size();
  if (grown != insertion.size) return std::nullopt;
  Bytes result;
  result.reserve(file.size() + grown);
  append(result, file.first(start - kHead));
  appendBigEndian32(result, static_cast<std::uint32_t>(kHead + 4 + boxes->size()));
  append(result, file.subspan(start - 4, 8));  // the type, version and flags
  append(result, *boxes);
  append(result, file.subspan(start + metaBox->size()));
  return result;
}

}  // namespace ostra
