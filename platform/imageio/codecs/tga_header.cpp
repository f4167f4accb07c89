#include "platform/imageio/codecs/tga_header.h"

#include <algorithm>
#include <string_view>

#include "platform/imageio/codecs/little_endian.h"

namespace ostra {
namespace {

constexpr unsigned kAlphaBits = 0x0F, kRightToLeft = 0x10, kTopDown = 0x20, kInterleaving = 0xC0;

bool isColourBits(unsigned bits) { return bits == 15 || bits == 16 || bits == 24 || bits == 32; }

bool bitsMakeSense(const TgaHeader& header, bool hasMap) {
  switch (header.kind) {
    case TgaKind::map:
      return hasMap && header.mapLength > 0 && (header.bits == 8 || header.bits == 16);
    case TgaKind::rgb:
      return isColourBits(header.bits);
    case TgaKind::gray:
      return header.bits == 8 || header.bits == 16;
  }
  return false;
}

// An RGB picture may have a map that it does not use; one that is not there has no size.
bool mapMakesSense(const TgaHeader& header, bool hasMap) {
  if (hasMap) return isColourBits(header.mapBits);
  return header.mapFirst == 0 && header.mapLength == 0 &&
         (header.mapBits == 0 || isColourBits(header.mapBits));
}

// How many alpha bits such pixels have room for.
unsigned roomForAlpha(const TgaHeader& header) {
  const unsigned bits = header.kind == TgaKind::map ? header.mapBits : header.bits;
  if (header.kind == TgaKind::gray) return bits == 16 ? 8 : 0;
  return bits == 32 ? 8 : bits == 16 ? 1 : 0;
}

}  // namespace

std::optional<TgaHeader> readTgaHeader(ByteView head) {
  if (head.size() < kTgaHeaderSize || head[1] > 1) return std::nullopt;
  const bool hasMap = head[1] == 1;
  const unsigned type = head[2], descriptor = head[17];
  if ((type & 7) < 1 || (type & 7) > 3 || (type & ~8U) > 3) return std::nullopt;
  TgaHeader header;
  header.kind = static_cast<TgaKind>(type & 7);
  header.isPacked = type > 8;
  header.mapFirst = littleEndian16(head, 3);
  header.mapLength = littleEndian16(head, 5);
  header.mapBits = head[7];
  header.width = littleEndian16(head, 12);
  header.height = littleEndian16(head, 14);
  header.bits = head[16];
  header.rightToLeft = (descriptor & kRightToLeft) != 0;
  header.topDown = (descriptor & kTopDown) != 0;
  if (header.width == 0 || header.height == 0 || !bitsMakeSense(header, hasMap)) return std::nullopt;
  if (!mapMakesSense(header, hasMap) || (descriptor & kInterleaving) != 0) return std::nullopt;
  const unsigned alphaBits = descriptor & kAlphaBits;
  if (alphaBits > 8) return std::nullopt;
  if (alphaBits > 0 && roomForAlpha(header) > 0) header.alpha = TgaAlpha::straight;
  header.mapAt = kTgaHeaderSize + head[0];
  header.dataAt = header.mapAt + (hasMap ? std::size_t{header.mapLength} * ((header.mapBits + 7) / 8) : 0);
  return header;
}

TgaHeader withTgaExtension(TgaHeader header, ByteView file) {
  constexpr std::string_view kMark("TRUEVISION-XFILE.\0", 18);
  constexpr std::size_t kFooterSize = 26, kAreaSize = 495, kAlphaKind = 494;
  constexpr unsigned kUseful = 3, kPremultiplied = 4;
  if (file.size() < kFooterSize || roomForAlpha(header) == 0) return header;
  const ByteView footer = file.last(kFooterSize);
  if (!std::equal(kMark.begin(), kMark.end(), footer.begin() + 8)) return header;
  const std::size_t at = littleEndian32(footer, 0);
  if (at == 0 || at > file.size() - kFooterSize || file.size() - kFooterSize - at < kAreaSize) return header;
  if (littleEndian16(file, at) < kAreaSize) return header;
  // 0 is what programs leave there that do not know the field.
  const unsigned kind = file[at + kAlphaKind];
  if (kind == 0) return header;
  header.alpha = kind == kUseful          ? TgaAlpha::straight
                 : kind == kPremultiplied ? TgaAlpha::premultiplied
                                          : TgaAlpha::none;
  return header;
}

}  // namespace ostra
