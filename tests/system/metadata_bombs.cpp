#include <string>

#include "tests/platform/imageio/picture_files.h"
#include "tests/support/icc_builder.h"
#include "tests/system/bombs.h"

namespace ostra::test {
namespace {

const std::string kSize = std::to_string(kWidth) + "x" + std::to_string(kHeight);

using namespace std::string_view_literals;

Bytes smallPicture() {
  return encoded("public.jpeg", pixelsOf(softSamples(kWidth, kHeight, 3, 8), kWidth, kHeight,
                                         CGColorSpaceModel::rgb, 8, CGImageAlphaInfo::none));
}

Bytes with(const Bytes& segments) { return withJpegSegment(smallPicture(), segments); }

/// Little-endian numbers behind each other.
class Block {
 public:
  explicit Block(std::string_view start) : bytes_(start.begin(), start.end()) {}
  Block& word(unsigned value) {
    bytes_.push_back(static_cast<std::uint8_t>(value));
    bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
    return *this;
  }
  Block& number(std::uint32_t value) { return word(value & 0xFFFF).word(value >> 16); }
  /// Of a directory.
  Block& entry(unsigned tag, unsigned type, std::uint32_t count, std::uint32_t value) {
    return word(tag).word(type).number(count).number(value);
  }
  const Bytes& bytes() const { return bytes_; }
  std::uint32_t size() const { return static_cast<std::uint32_t>(bytes_.size()); }

 private:
  Bytes bytes_;
};

Block tiff() { return Block("II*\0\b\0\0\0"sv); }
Bytes exif(const Block& block) { return with(jpegSegment(0xE1, "Exif\0\0"sv, block.bytes())); }

/// Directories that each lead to the next, by a pointer of this tag or, for 0, by the chain.
Block directories(int count, unsigned tag) {
  Block block = tiff();
  for (int i = 0; i < count; ++i) {
    const std::uint32_t next = block.size() + 18;
    block.word(1)
        .entry(tag == 0 ? 0x10E : tag, tag == 0 ? 2 : 4, 1, tag == 0 ? 0 : next)
        .number(tag == 0 ? next : 0);
  }
  return block;
}

constexpr std::string_view kXmpHead = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kExtensionHead = "http://ns.adobe.com/xmp/extension/\0"sv;
const std::string kName(32, 'A');

std::string packet(const std::string& contents, const std::string& attributes = "") {
  return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
         "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'" +
         attributes + ">" + contents + "</rdf:RDF></x:xmpmeta>";
}

Bytes xmp(const std::string& text) { return jpegSegment(0xE1, kXmpHead, bytesOfText(text)); }

Bytes extension(const std::string& name, std::uint32_t size, std::uint32_t offset, std::string_view text) {
  Bytes numbers(8);
  putNumber(numbers, 0, size);
  putNumber(numbers, 4, offset);
  return jpegSegment(0xE1, kExtensionHead, joined({bytesOfText(name), numbers, bytesOfText(text)}));
}

/// An extension in as many segments as it takes, behind a packet that names it.
Bytes extendedXmp(const std::string& text) {
  constexpr std::size_t kRoom = 60'000;
  Bytes segments = xmp(
      packet("<rdf:Description xmlns:n='http://ns.adobe.com/xmp/note/' n:HasExtendedXMP='" + kName + "'/>"));
  for (std::size_t at = 0; at < text.size(); at += kRoom) {
    const Bytes part = extension(kName, static_cast<std::uint32_t>(text.size()),
                                 static_cast<std::uint32_t>(at), std::string_view(text).substr(at, kRoom));
    segments.insert(segments.end(), part.begin(), part.end());
  }
  return with(segments);
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

std::string nested(std::size_t depth) { return repeated("<a>", depth) + repeated("</a>", depth); }

std::string namespaces(int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += " xmlns:n" + std::to_string(i) + "='u'";
  return all;
}

/// A profile in segments of this size.
Bytes profile(const Bytes& bytes, std::size_t room) {
  Bytes segments;
  const std::size_t count = (bytes.size() + room - 1) / room;
  for (std::size_t i = 0; i < count; ++i) {
    const ByteView part = ByteView(bytes).subspan(i * room, std::min(room, bytes.size() - i * room));
    const std::string head{"ICC_PROFILE\0"sv};
    const Bytes numbers = {static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(count)};
    const Bytes segment = jpegSegment(0xE2, head, joined({numbers, Bytes(part.begin(), part.end())}));
    segments.insert(segments.end(), segment.begin(), segment.end());
  }
  return with(segments);
}

/// A tag of this type whose numbers are all as large as they can be.
Bytes greedyTag(std::string_view type, std::size_t size) {
  Bytes tag(size, 0xFF);
  std::copy(type.begin(), type.end(), tag.begin());
  std::fill(tag.begin() + 4, tag.begin() + 8, std::uint8_t{0});
  return tag;
}

/// Of tables, curves and texts that promise more than there is.
Bytes greedyProfile(std::string_view tableType) {
  Bytes table = greedyTag(tableType, 4000);
  table[8] = table[9] = 3;  // components
  const Bytes curve = joined({bytesOfText("curv\0\0\0\0\xFF\xFF\xFF\xFF"sv), Bytes(100)});
  IccParts parts;
  for (const char* tag : {"A2B0", "A2B1", "B2A0", "gamt", "D2B0"}) parts.tags.emplace_back(tag, table);
  for (const char* tag : {"rTRC", "gTRC", "bTRC"}) parts.tags.emplace_back(tag, curve);
  for (const char* tag : {"desc", "cprt"}) parts.tags.emplace_back(tag, greedyTag("mluc", 200));
  parts.tags.emplace_back("pseq", greedyTag("pseq", 200));
  parts.tags.emplace_back("wtpt", greedyTag("XYZ ", 20));
  return iccFile(parts);
}

Bytes photoshop(std::string_view resources) {
  return with(jpegSegment(0xED, "Photoshop 3.0\0"sv, bytesOfText(resources)));
}

}  // namespace

std::vector<Bomb> metadataBombs() {
  return {
      {"ExifThatRunsInACircle", "jpg", [] { return exif(tiff().word(1).entry(0x8769, 4, 1, 8).number(8)); },
       kSize},
      {"ExifOfHugeCounts", "jpg",
       [] {
         Block block = tiff().word(5);
         for (const unsigned type : {1u, 2u, 5u, 7u, 12u}) block.entry(0x100 + type, type, 0xFFFFFFFF, 8);
         return exif(block.number(0));
       },
       kSize},
      {"ExifOfManyDirectories", "jpg", [] { return exif(directories(3600, 0)); }, kSize},
      {"ExifOfNestedDirectories", "jpg", [] { return exif(directories(3600, 0x8769)); }, kSize},
      {"ExifOfNestedSubdirectories", "jpg", [] { return exif(directories(3600, 0x14A)); }, kSize},
      {"ExifWhoseEntriesShareOneValue", "jpg",
       [] {
         Block block = tiff().word(5000);
         for (unsigned tag = 0; tag < 5000; ++tag) block.entry(tag, 7, 60'000, 8);
         return exif(block.number(0));
       },
       kSize},
      {"ExifOfMoreEntriesThanThereAre", "jpg", [] { return exif(tiff().word(0xFFFF).number(0)); }, kSize},
      {"XmpThatPromisesFourGigabytes", "jpg",
       [] {
         return with(
             joined({xmp(packet("<rdf:Description n:HasExtendedXMP='" + kName + "'/>", " xmlns:n='u'")),
                     extension(kName, 0xFFFFFFFF, 0, "<a/>")}));
       },
       kSize},
      {"XmpWithTenThousandExtensions", "jpg",
       [] {
         Bytes segments = xmp(packet(repeated("<rdf:Description/>", 3000)));
         for (int i = 0; i < 10'000; ++i) {
           const std::string number = std::to_string(1'000'000 + i);
           const Bytes part = extension(std::string(25, 'B') + number, 4, 0, "<a/>");
           segments.insert(segments.end(), part.begin(), part.end());
         }
         return with(segments);
       },
       kSize},
      {"XmpWhoseNamespacesMultiply", "jpg",
       [] { return extendedXmp(packet(repeated("<rdf:Description/>", 30'000), namespaces(1900))); }},
      {"XmpNestedDeeply", "jpg", [] { return with(xmp(packet(nested(9000)))); }, kSize},
      {"XmpNestedDeeplyWithoutItsRoot", "jpg", [] { return with(xmp(nested(9000))); }, kSize},
      {"XmpExtensionNestedDeeply", "jpg",
       [] { return extendedXmp(packet("<rdf:Description>" + nested(40'000) + "</rdf:Description>")); },
       kSize},
      {"XmpOfAHundredThousandElements", "jpg",
       [] {
         return extendedXmp(packet("<rdf:Description>" + repeated("<a/>", 90'000) + "</rdf:Description>"));
       },
       kSize},
      {"XmpOfManySubjects", "jpg",
       [] {
         return extendedXmp(
             packet("<rdf:Description xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:subject>"
                    "<rdf:Bag>" +
                    repeated("<rdf:li>a</rdf:li>", 90'000) + "</rdf:Bag></dc:subject></rdf:Description>"));
       },
       kSize},
      {"XmpOfEntitiesWithinEntities", "jpg",
       [] {
         std::string entities = "<!DOCTYPE x [<!ENTITY a0 'aaaaaaaaaa'>";
         for (int i = 1; i < 30; ++i) {
           entities += "<!ENTITY a" + std::to_string(i) + " '" +
                       repeated("&a" + std::to_string(i - 1) + ";", 10) + "'>";
         }
         return with(xmp(entities + "]>" + packet("<rdf:Description>&a29;</rdf:Description>")));
       },
       kSize},
      {"ProfileInManySegments", "jpg", [] { return profile(greedyProfile("mft2"), 120); }, kSize},
      {"ProfileOfSixteenMegabytes", "jpg",
       [] {
         Bytes bytes = greedyProfile("mft2");
         bytes.resize(std::size_t{255} * 65'000);
         putNumber(bytes, 0, static_cast<std::uint32_t>(bytes.size()));
         return profile(bytes, 65'000);
       },
       kSize},
      {"ProfileOfGreedyTables", "jpg", [] { return profile(greedyProfile("mft1"), 60'000); }, kSize},
      {"ProfileOfGreedyCurves", "jpg", [] { return profile(greedyProfile("mAB "), 60'000); }, kSize},
      {"ProfileOfGreedyElements", "jpg", [] { return profile(greedyProfile("mpet"), 60'000); }, kSize},
      {"IptcOfFourGigabytes", "jpg",
       [] { return photoshop("8BIM\4\4\0\0\0\0\0\x09\x1C\x02\x78\x80\x04\xFF\xFF\xFF\xFF\0"sv); }, kSize},
      {"PhotoshopBlockOfFourGigabytes", "jpg", [] { return photoshop("8BIM\4\4\0\0\xFF\xFF\xFF\xFF\x1C"sv); },
       kSize},
      {"PhotoshopBlockOfManyResources", "jpg",
       [] { return photoshop(repeated("8BIM\4\2\0\0\0\0\0\0"sv, 5000)); }, kSize},
      {"IndexOfEndlessPictures", "jpg",
       [] {
         const Block block = tiff().word(1).entry(0xB002, 7, 0xFFFFFFF0, 26).number(0);
         return with(jpegSegment(0xE2, "MPF\0"sv, block.bytes()));
       },
       kSize},
      {"IndexOfThousandsOfViews", "jpg",
       [] {
         Block block = tiff().word(1).entry(0xB002, 7, 16 * 3800, 26).number(0);
         for (int i = 0; i < 3800; ++i) block.number(0x020002).number(100).number(0).number(0);
         return with(jpegSegment(0xE2, "MPF\0"sv, block.bytes()));
       }},
  };
}

}  // namespace ostra::test
