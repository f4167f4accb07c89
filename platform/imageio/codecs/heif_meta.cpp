#include "platform/imageio/codecs/heif_meta.h"

#include <algorithm>

namespace ostra {
namespace {

struct FullBoxHead {
  unsigned version = 0;
  std::uint32_t flags = 0;
};

FullBoxHead readHead(BmffFields& fields) {
  const auto version = fields.byte();
  return {version, static_cast<std::uint32_t>(fields.number(3))};
}

bool readPrimary(ByteView content, HeifMeta& meta) {
  BmffFields fields(content);
  meta.primary = static_cast<std::uint32_t>(fields.number(readHead(fields).version == 0 ? 2 : 4));
  return fields.isIntact();
}

bool readItemInfo(ByteView content, HeifMeta& meta) {
  BmffFields fields(content);
  const FullBoxHead head = readHead(fields);
  if (head.version < 2) return fields.isIntact();  // of older kinds of files
  const auto id = static_cast<std::uint32_t>(fields.number(head.version == 2 ? 2 : 4));
  fields.number16();  // protection
  HeifItem item;
  item.type = fields.number32();
  item.hidden = (head.flags & 1) != 0;
  fields.text();  // its name
  if (item.type == bmffType("mime")) {
    item.contentType = fields.text();
    item.contentEncoding = fields.text();
  }
  if (fields.isIntact()) meta.items.emplace(id, std::move(item));
  return fields.isIntact();
}

bool readItemInfos(ByteView content, HeifMeta& meta) {
  BmffFields fields(content);
  fields.number(readHead(fields).version == 0 ? 2 : 4);  // how many
  BmffWalk walk(fields.rest());
  while (const auto box = walk.next()) {
    if (box->type == bmffType("infe") && !readItemInfo(box->content, meta)) return false;
  }
  return fields.isIntact() && walk.cutOff() == 0;
}

struct LocationSizes {
  std::size_t offset, length, base, index;
};

void readExtents(BmffFields& fields, const LocationSizes& sizes, HeifItem& item) {
  const std::uint64_t base = fields.number(sizes.base);
  const unsigned count = fields.number16();
  for (unsigned i = 0; i < count && fields.isIntact(); ++i) {
    fields.number(sizes.index);
    const std::uint64_t offset = base + fields.number(sizes.offset);
    item.extents.push_back({offset, fields.number(sizes.length)});
  }
}

bool readLocations(ByteView content, HeifMeta& meta) {
  BmffFields fields(content);
  const unsigned version = readHead(fields).version;
  const unsigned sizes = fields.number16();
  const std::size_t indexSize = version == 0 ? 0 : sizes & 15;
  const LocationSizes widths{sizes >> 12, sizes >> 8 & 15, sizes >> 4 & 15, indexSize};
  if (std::max({widths.offset, widths.length, widths.base, widths.index}) > 8) return false;
  const std::uint64_t count = fields.number(version < 2 ? 2 : 4);
  for (std::uint64_t i = 0; i < count && fields.isIntact(); ++i) {
    const auto id = static_cast<std::uint32_t>(fields.number(version < 2 ? 2 : 4));
    HeifItem place;
    if (version > 0) place.construction = fields.number16() & 15;
    fields.number16();  // data reference
    readExtents(fields, widths, place);
    const auto found = meta.items.find(id);
    if (found == meta.items.end()) continue;
    found->second.extents = std::move(place.extents);
    found->second.construction = place.construction;
  }
  return fields.isIntact();
}

bool readReferences(ByteView content, HeifMeta& meta) {
  BmffFields head(content);
  const std::size_t idSize = readHead(head).version == 0 ? 2 : 4;
  BmffWalk walk(head.rest());
  while (const auto box = walk.next()) {
    BmffFields fields(box->content);
    HeifReference reference;
    reference.type = box->type;
    reference.from = static_cast<std::uint32_t>(fields.number(idSize));
    const unsigned count = fields.number16();
    for (unsigned i = 0; i < count && fields.isIntact(); ++i)
      reference.to.push_back(static_cast<std::uint32_t>(fields.number(idSize)));
    if (!fields.isIntact()) return false;
    meta.references.push_back(std::move(reference));
  }
  return head.isIntact() && walk.cutOff() == 0;
}

bool readGroups(ByteView content, HeifMeta& meta) {
  BmffWalk walk(content);
  while (const auto box = walk.next()) {
    BmffFields fields(box->content);
    readHead(fields);
    fields.number32();  // the group's own number
    HeifGroup group;
    group.type = box->type;
    const std::uint32_t count = fields.number32();
    for (std::uint32_t i = 0; i < count && fields.isIntact(); ++i) group.members.push_back(fields.number32());
    if (!fields.isIntact()) return false;
    meta.groups.push_back(std::move(group));
  }
  return walk.cutOff() == 0;
}

bool readAssociations(ByteView content, HeifMeta& meta) {
  BmffFields fields(content);
  const FullBoxHead head = readHead(fields);
  const std::size_t indexSize = (head.flags & 1) != 0 ? 2 : 1;
  const std::uint32_t count = fields.number32();
  for (std::uint32_t i = 0; i < count && fields.isIntact(); ++i) {
    const auto found = meta.items.find(static_cast<std::uint32_t>(fields.number(head.version == 0 ? 2 : 4)));
    const unsigned properties = fields.byte();
    for (unsigned p = 0; p < properties && fields.isIntact(); ++p) {
      const std::uint64_t index = fields.number(indexSize) & (indexSize == 2 ? 0x7FFF : 0x7F);
      if (index > meta.properties.size()) return false;
      if (index > 0 && found != meta.items.end()) found->second.properties.push_back(index - 1);
    }
  }
  return fields.isIntact();
}

bool readProperties(ByteView content, HeifMeta& meta) {
  const auto container = findBmffBox(content, bmffType("ipco"));
  if (!container) return false;
  BmffWalk properties(*container);
  while (const auto box = properties.next()) meta.properties.push_back(*box);
  BmffWalk walk(content);
  while (const auto box = walk.next()) {
    if (box->type == bmffType("ipma") && !readAssociations(box->content, meta)) return false;
  }
  return properties.cutOff() == 0 && walk.cutOff() == 0;
}

// In this order, whatever the file's: each stands on the ones before.
constexpr struct {
  std::uint32_t type;
  bool (*read)(ByteView content, HeifMeta& meta);
} kParts[] = {{bmffType("pitm"), readPrimary},   {bmffType("iinf"), readItemInfos},
              {bmffType("iloc"), readLocations}, {bmffType("iref"), readReferences},
              {bmffType("grpl"), readGroups},    {bmffType("iprp"), readProperties}};

}  // namespace

const HeifItem* HeifMeta::item(std::uint32_t id) const {
  const auto found = items.find(id);
  return found == items.end() ? nullptr : &found->second;
}

std::optional<ByteView> HeifMeta::property(const HeifItem& item, std::uint32_t type) const {
  for (const std::size_t index : item.properties) {
    if (properties[index].type == type) return properties[index].content;
  }
  return std::nullopt;
}

bool HeifMeta::refers(std::uint32_t type, std::uint32_t from, std::uint32_t to) const {
  return std::any_of(references.begin(), references.end(), [&](const HeifReference& reference) {
    return reference.type == type && reference.from == from &&
           std::find(reference.to.begin(), reference.to.end(), to) != reference.to.end();
  });
}

std::optional<HeifMeta> readHeifMeta(ByteView metaBox) {
  if (metaBox.size() < 4) return std::nullopt;
  const ByteView boxes = metaBox.subspan(4);  // version and flags
  HeifMeta meta;
  for (const auto& part : kParts) {
    const auto content = findBmffBox(boxes, part.type);
    if (content && !part.read(*content, meta)) return std::nullopt;
  }
  meta.idat = findBmffBox(boxes, bmffType("idat")).value_or(ByteView());
  return meta;
}

}  // namespace ostra
