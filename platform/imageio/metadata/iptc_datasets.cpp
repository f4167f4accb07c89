#include "platform/imageio/metadata/iptc_datasets.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "platform/imageio/metadata/exif_structure.h"

namespace ostra {

namespace {

constexpr std::uint8_t kMarker = 0x1C;
constexpr std::size_t kHeadSize = 5;
/// Above this the length does not fit the head and its bytes are counted there instead (IIM 4.2, 1.6).
constexpr std::size_t kLongestStandard = 0x7FFF;

constexpr IptcTag kTags[] = {
    {3, "ObjectTypeReference"},
    {4, "ObjectAttributeReference", true},
    {5, "ObjectName"},
    {7, "EditStatus"},
    {8, "EditorialUpdate"},
    {10, "Urgency"},
    {12, "SubjectReference", true},
    {15, "Category"},
    {20, "SupplementalCategory", true},
    {22, "FixtureIdentifier"},
    {25, "Keywords", true},
    {26, "ContentLocationCode", true},
    {27, "ContentLocationName", true},
    {30, "ReleaseDate"},
    {35, "ReleaseTime"},
    {37, "ExpirationDate"},
    {38, "ExpirationTime"},
    {40, "SpecialInstructions"},
    {42, "ActionAdvised"},
    {45, "ReferenceService", true},
    {47, "ReferenceDate", true},
    {50, "ReferenceNumber", true},
    {55, "DateCreated"},
    {60, "TimeCreated"},
    {62, "DigitalCreationDate"},
    {63, "DigitalCreationTime"},
    {65, "OriginatingProgram"},
    {70, "ProgramVersion"},
    {75, "ObjectCycle"},
    {80, "Byline", true},
    {85, "BylineTitle", true},
    {90, "City"},
    {92, "SubLocation"},
    {95, "Province/State"},
    {100, "Country/PrimaryLocationCode"},
    {101, "Country/PrimaryLocationName"},
    {103, "OriginalTransmissionReference"},
    {105, "Headline"},
    {110, "Credit"},
    {115, "Source"},
    {116, "CopyrightNotice"},
    {118, "Contact", true},
    {120, "Caption/Abstract"},
    {122, "Writer/Editor", true},
    {130, "ImageType"},
    {131, "ImageOrientation"},
    {135, "LanguageIdentifier"},
};

struct Head {
  std::size_t size = kHeadSize;
  std::size_t valueSize = 0;
};

std::optional<Head> readHead(ByteView rest) {
  if (rest.size() < kHeadSize || rest[0] != kMarker) return std::nullopt;
  const std::size_t length = read16(rest, 3, ByteOrder::big);
  if (length <= kLongestStandard) return Head{kHeadSize, length};
  const std::size_t bytes = length & kLongestStandard;
  if (bytes > 4 || rest.size() < kHeadSize + bytes) return std::nullopt;
  Head head{kHeadSize + bytes, 0};
  for (std::size_t i = 0; i < bytes; ++i) head.valueSize = head.valueSize << 8 | rest[kHeadSize + i];
  return head;
}

}  // namespace

std::vector<IptcDataSet> splitIptc(ByteView records) {
  std::vector<IptcDataSet> sets;
  while (const auto head = readHead(records)) {
    if (head->valueSize > records.size() - head->size) break;
    const std::size_t size = head->size + head->valueSize;
    sets.push_back(
        {records[1], records[2], records.first(size), records.subspan(head->size, head->valueSize)});
    records = records.subspan(size);
  }
  return sets;
}

void appendDataSet(Bytes& records, std::uint8_t record, std::uint8_t number, ByteView value) {
  const std::size_t size = std::min<std::size_t>(value.size(), std::numeric_limits<std::uint32_t>::max());
  const std::size_t start = records.size();
  const bool extended = size > kLongestStandard;
  records.resize(start + (extended ? kHeadSize + 4 : kHeadSize));
  records[start] = kMarker;
  records[start + 1] = record;
  records[start + 2] = number;
  write16(records, start + 3, static_cast<std::uint16_t>(extended ? 0x8004 : size), ByteOrder::big);
  if (extended) write32(records, start + kHeadSize, static_cast<std::uint32_t>(size), ByteOrder::big);
  records.insert(records.end(), value.begin(), value.begin() + static_cast<std::ptrdiff_t>(size));
}

std::span<const IptcTag> iptcTags() { return kTags; }

const IptcTag* findIptcTag(std::uint8_t number) {
  const auto tag =
      std::find_if(std::begin(kTags), std::end(kTags), [&](const IptcTag& t) { return t.number == number; });
  return tag == std::end(kTags) ? nullptr : &*tag;
}

}  // namespace ostra
