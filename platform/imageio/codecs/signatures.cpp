#include "platform/imageio/codecs/signatures.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/imageio/codecs/bmff_boxes.h"

namespace ostra {

using namespace std::string_view_literals;

namespace {

bool hasText(FileBytes head, std::size_t offset, std::string_view text) {
  const auto same = [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; };
  return head.size() >= offset + text.size() &&
         std::equal(text.begin(), text.end(), head.begin() + static_cast<std::ptrdiff_t>(offset), same);
}

constexpr std::array kHeicBrands = {bmffType("heic"), bmffType("heix"), bmffType("heim"), bmffType("heis")};
constexpr std::array kHeicsBrands = {bmffType("hevc"), bmffType("hevx"), bmffType("hevm"), bmffType("hevs")};
constexpr std::array kAvifBrands = {bmffType("avif")};
constexpr std::array kAvisBrands = {bmffType("avis")};
constexpr std::array kGeneralBrands = {bmffType("mif1"), bmffType("mif2"), bmffType("msf1"),
                                       bmffType("miaf")};

bool isOneOf(std::uint32_t brand, std::span<const std::uint32_t> brands) {
  return std::find(brands.begin(), brands.end(), brand) != brands.end();
}

bool saysMore(std::uint32_t brand) {
  return isOneOf(brand, kHeicBrands) || isOneOf(brand, kHeicsBrands) || isOneOf(brand, kAvifBrands) ||
         isOneOf(brand, kAvisBrands);
}

/// The brand that decides; 0 when the file is of another family. Of a long list only the beginning is seen.
std::uint32_t brandOf(FileBytes head) {
  BmffFields fields(head);
  const std::uint32_t size = fields.number32();
  if (fields.number32() != bmffType("ftyp") || size < 16) return 0;
  const std::uint32_t major = fields.number32();
  if (!fields.isIntact() || !isOneOf(major, kGeneralBrands)) return saysMore(major) ? major : 0;
  fields.number32();  // the major brand's version
  for (std::size_t at = 16; at + 4 <= std::min<std::size_t>(size, head.size()); at += 4) {
    if (const std::uint32_t brand = fields.number32(); saysMore(brand)) return brand;
  }
  return major;
}

}  // namespace

// Classic and big, in either byte order.
bool matchesTiff(FileBytes head) {
  return hasText(head, 0, "II*\0"sv) || hasText(head, 0, "MM\0*"sv) || hasText(head, 0, "II+\0\x08\0"sv) ||
         hasText(head, 0, "MM\0+\0\x08"sv);
}

bool matchesJpeg2000(FileBytes head) {
  constexpr std::string_view boxes("\0\0\0\x0CjP  \r\n\x87\n", 12), codestream("\xFF\x4F\xFF\x51", 4);
  return hasText(head, 0, boxes) || hasText(head, 0, codestream);
}

bool matchesJxl(FileBytes head) {
  constexpr std::string_view boxes("\0\0\0\x0CJXL \r\n\x87\n", 12), codestream("\xFF\x0A", 2);
  return hasText(head, 0, boxes) || hasText(head, 0, codestream);
}

bool matchesExr(FileBytes head) { return hasText(head, 0, "\x76\x2F\x31\x01"); }

bool matchesTiffRaw(FileBytes head) { return hasText(head, 0, "II*\0"sv) || hasText(head, 0, "MM\0*"sv); }
bool matchesCr2(FileBytes head) { return hasText(head, 0, "II*\0"sv) && hasText(head, 8, "CR\2"); }
bool matchesCr3(FileBytes head) { return hasText(head, 4, "ftypcrx "); }
bool matchesCrw(FileBytes head) {
  return (hasText(head, 0, "II") || hasText(head, 0, "MM")) && hasText(head, 6, "HEAPCCDR");
}
bool matchesMrw(FileBytes head) { return hasText(head, 0, "\0MRM"sv); }
bool matchesOrf(FileBytes head) {
  return hasText(head, 0, "IIRO") || hasText(head, 0, "IIRS") || hasText(head, 0, "MMOR");
}
bool matchesRaf(FileBytes head) { return hasText(head, 0, "FUJIFILMCCD-RAW "); }
bool matchesRw2(FileBytes head) { return hasText(head, 0, "IIU\0"sv); }
bool matchesHeic(FileBytes head) { return isOneOf(brandOf(head), kHeicBrands); }
bool matchesHeics(FileBytes head) { return isOneOf(brandOf(head), kHeicsBrands); }
bool matchesAvif(FileBytes head) { return isOneOf(brandOf(head), kAvifBrands); }
bool matchesAvis(FileBytes head) { return isOneOf(brandOf(head), kAvisBrands); }
bool matchesHeif(FileBytes head) { return isOneOf(brandOf(head), kGeneralBrands); }

bool matchesWebp(FileBytes head) { return hasText(head, 0, "RIFF") && hasText(head, 8, "WEBPVP8"); }

}  // namespace ostra
