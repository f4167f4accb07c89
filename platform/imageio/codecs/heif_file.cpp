#include "platform/imageio/codecs/heif_file.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include "platform/graphics/code_points.h"
#include "platform/imageio/codecs/heif_derived.h"
#include "platform/imageio/codecs/heif_tracks.h"
#include "platform/imageio/profile_space.h"

namespace ostra {
namespace {

/// Where an extent lies; nothing when that is not in the file.
std::optional<ByteView> bytesOf(ByteView source, const HeifExtent& extent) {
  if (extent.offset > source.size()) return std::nullopt;
  const std::uint64_t rest = source.size() - extent.offset;
  const std::uint64_t length = extent.length == 0 ? rest : extent.length;
  if (length > rest) return std::nullopt;
  return source.subspan(extent.offset, length);
}

bool isWhole(ByteView file, const HeifMeta& meta) {
  return std::all_of(meta.items.begin(), meta.items.end(), [&](const auto& entry) {
    const HeifItem& item = entry.second;
    if (item.construction > 1) return true;
    const ByteView source = item.construction == 0 ? file : meta.idat;
    return std::all_of(item.extents.begin(), item.extents.end(),
                       [&](const HeifExtent& extent) { return bytesOf(source, extent).has_value(); });
  });
}

/// A box that readers know, and that lacks its end, was cut off with the file. What else is behind the last
/// box may be anything.
bool endsInABox(ByteView file) {
  BmffWalk walk(file);
  while (walk.next()) {
  }
  const auto known = {bmffType("ftyp"), bmffType("meta"), bmffType("mdat"), bmffType("moov"),
                      bmffType("moof"), bmffType("free"), bmffType("skip")};
  return std::find(known.begin(), known.end(), walk.cutOff()) != known.end();
}

bool isPicture(const HeifItem& item) {
  const auto others = {bmffType("Exif"), bmffType("mime"), bmffType("uri "),
                       bmffType("tmap"), bmffType("rgan"), bmffType("mski")};
  return std::find(others.begin(), others.end(), item.type) == others.end();
}

/// Items that belong to another picture, or show the primary one in another way.
std::set<std::uint32_t> dependents(const HeifMeta& meta) {
  std::set<std::uint32_t> found;
  for (const HeifReference& reference : meta.references) {
    const bool serves = reference.type == bmffType("thmb") || reference.type == bmffType("auxl") ||
                        reference.type == bmffType("cdsc");
    if (serves) found.insert(reference.from);
    if (reference.type == bmffType("dimg")) found.insert(reference.to.begin(), reference.to.end());
  }
  for (const HeifGroup& group : meta.groups) {
    const bool alternatives = group.type == bmffType("altr") || group.type == bmffType("pymd");
    const auto& members = group.members;
    if (alternatives && std::find(members.begin(), members.end(), meta.primary) != members.end())
      found.insert(members.begin(), members.end());
  }
  return found;
}

std::uint32_t countOf(const HeifMeta& meta) {
  const std::set<std::uint32_t> others = dependents(meta);
  const auto counts = [&](const auto& entry) {
    const auto& [id, item] = entry;
    return id != meta.primary && !item.hidden && isPicture(item) && !others.contains(id);
  };
  return 1 + static_cast<std::uint32_t>(std::count_if(meta.items.begin(), meta.items.end(), counts));
}

/// A derived picture is coded as the first one that it is made of.
const HeifItem& codedItem(const HeifMeta& meta, const HeifItem& item) {
  const HeifItem* coded = &item;
  std::uint32_t id = meta.primary;
  for (int depth = 0; depth < 4; ++depth) {
    const auto made =
        std::find_if(meta.references.begin(), meta.references.end(), [&](const HeifReference& reference) {
          return reference.type == bmffType("dimg") && reference.from == id && !reference.to.empty();
        });
    if (made == meta.references.end() || meta.item(made->to.front()) == nullptr) break;
    id = made->to.front();
    coded = meta.item(id);
  }
  return *coded;
}

// The configuration of the coding tells more closely than the number of channels, which is often left out.
void readSamples(const HeifMeta& meta, const HeifItem& item, HeifFile& heif) {
  const HeifItem& coded = codedItem(meta, item);
  if (const auto pixi = meta.property(item, bmffType("pixi")); pixi && pixi->size() >= 6) {
    heif.isGray = (*pixi)[4] == 1;
    heif.bits = (*pixi)[5];
  }
  if (const auto hevc = meta.property(coded, bmffType("hvcC")); hevc && hevc->size() >= 19) {
    heif.isGray = ((*hevc)[16] & 3) == 0;
    heif.bits = 8 + ((*hevc)[17] & 7u);
  }
  if (const auto av1 = meta.property(coded, bmffType("av1C")); av1 && av1->size() >= 4) {
    const unsigned flags = (*av1)[2];
    heif.isGray = (flags & 0x10) != 0;
    heif.bits = (flags & 0x40) == 0 ? 8 : (flags & 0x20) == 0 ? 10 : 12;
  }
}

bool isAlpha(const HeifMeta& meta, const HeifItem& item) {
  const auto content = meta.property(item, bmffType("auxC"));
  if (!content || content->size() < 4) return false;
  BmffFields fields(content->subspan(4));
  const std::string_view kind = fields.text();
  return kind == "urn:mpeg:mpegB:cicp:systems:auxiliary:alpha" || kind == "urn:mpeg:hevc:2015:auxid:1" ||
         kind == "urn:mpeg:avc:2015:auxid:1";
}

bool hasAlpha(const HeifMeta& meta) {
  return std::any_of(meta.references.begin(), meta.references.end(), [&](const HeifReference& reference) {
    const HeifItem* item = meta.item(reference.from);
    return item != nullptr && isAlpha(meta, *item) &&
           meta.refers(bmffType("auxl"), reference.from, meta.primary);
  });
}

void readColour(const HeifMeta& meta, const HeifItem& item, HeifFile& heif) {
  for (const std::size_t index : item.properties) {
    if (meta.properties[index].type != bmffType("colr")) continue;
    BmffFields fields(meta.properties[index].content);
    const std::uint32_t kind = fields.number32();
    if (kind == bmffType("prof") || kind == bmffType("rICC")) {
      heif.icc = fields.rest();
    } else if (kind == bmffType("nclx")) {
      const unsigned primaries = fields.number16(), transfer = fields.number16();
      if (fields.isIntact()) heif.colour = HeifColour{primaries, transfer};
    }
  }
}

bool readTransforms(const HeifMeta& meta, const HeifItem& item, HeifFile& heif) {
  std::vector<BmffBox> properties;
  for (const std::size_t index : item.properties) properties.push_back(meta.properties[index]);
  const auto transforms = heifTransforms(properties, heif.width, heif.height);
  if (transforms) heif.transforms = *transforms;
  return transforms.has_value();
}

bool readSize(const HeifMeta& meta, const HeifItem& item, HeifFile& heif) {
  BmffFields fields(meta.property(item, bmffType("ispe")).value_or(ByteView()));
  fields.number32();  // version and flags
  heif.width = fields.number32();
  heif.height = fields.number32();
  return heif.width > 0 && heif.height > 0;
}

}  // namespace

std::optional<HeifFile> readHeifFile(ByteView file) {
  const auto box = findBmffBox(file, bmffType("meta"));
  auto meta = box ? readHeifMeta(*box) : std::nullopt;
  const HeifItem* const item = meta ? meta->item(meta->primary) : nullptr;
  if (item == nullptr || endsInABox(file) || !isWhole(file, *meta) || !derivedSizesAgree(file, *meta))
    return std::nullopt;
  HeifFile heif;
  heif.itemType = item->type;
  if (!readSize(*meta, *item, heif) || !readTransforms(*meta, *item, heif)) return std::nullopt;
  readSamples(*meta, *item, heif);
  readColour(*meta, codedItem(*meta, *item), heif);
  readColour(*meta, *item, heif);
  heif.hasAlpha = hasAlpha(*meta);
  heif.count = std::max(countOf(*meta), heifTrackSamples(file));
  heif.meta = std::move(*meta);
  return heif;
}

Bytes heifItemContent(ByteView file, const HeifMeta& meta, const HeifItem& item, const Limits& limits) {
  Bytes content;
  if (item.construction > 1) return content;
  for (const HeifExtent& extent : item.extents) {
    const auto part = bytesOf(item.construction == 0 ? file : meta.idat, extent);
    if (!part) return {};
    if (part->size() > limits.metadataBytes - content.size()) throw LimitExceeded{LimitName::metadataBytes};
    content.insert(content.end(), part->begin(), part->end());
  }
  return content;
}

ProfileRecord heifProfile(const HeifFile& heif, const Limits& limits) {
  const CGColorSpaceModel model = heif.isGray ? CGColorSpaceModel::monochrome : CGColorSpaceModel::rgb;
  if (heif.icc.size() > limits.profileBytes) throw LimitExceeded{LimitName::profileBytes};
  if (!heif.icc.empty()) {
    ProfileRecord profile = IccProfile{Bytes(heif.icc.begin(), heif.icc.end())};
    if (statedSpace(profile, model) != nullptr) return profile;
  }
  if (!heif.colour) return Untagged{};
  return profileOfSpace(spaceOfCodePoints(heif.colour->primaries, heif.colour->transfer, model));
}

}  // namespace ostra
