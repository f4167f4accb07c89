#include "tests/faults/picture_parts.h"

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>

#include <zlib.h>

#include "platform/imageio/codec.h"
#include "platform/types/ut_type.h"
#include "tests/platform/imageio/picture_files.h"

namespace ostra::test {
namespace {

constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
constexpr std::size_t kChunkFrame = 12;  // length, type and checksum

std::uint32_t checksumOf(ByteView chunk) {
  return static_cast<std::uint32_t>(
      crc32(0, chunk.data() + 4, static_cast<unsigned>(chunk.size() - kChunkFrame + 4)));
}

/// The size of the chunk at the beginning, or nothing when it does not fit.
std::optional<std::size_t> chunkSize(ByteView rest) {
  if (rest.size() < kChunkFrame) return std::nullopt;
  const std::size_t size = kChunkFrame + bigEndian(rest, 0, 4);
  return size <= rest.size() ? std::optional(size) : std::nullopt;
}

bool standsAlone(int marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD9); }

/// The size of the marker, with its segment, at the beginning; of coded pixels where no marker stands.
std::optional<std::size_t> segmentSize(ByteView rest) {
  if (rest.size() < 2) return std::nullopt;
  if (rest[0] == 0xFF && rest[1] != 0x00 && rest[1] != 0xFF) {
    if (standsAlone(rest[1])) return 2;
    if (rest.size() < 4) return std::nullopt;
    const std::size_t size = 2 + bigEndian(rest, 2, 2);
    return size >= 4 && size <= rest.size() ? std::optional(size) : std::nullopt;
  }
  for (std::size_t i = 1; i + 1 < rest.size(); ++i) {
    const bool restart = rest[i + 1] >= 0xD0 && rest[i + 1] <= 0xD7;
    if (rest[i] == 0xFF && rest[i + 1] != 0x00 && rest[i + 1] != 0xFF && !restart) return i;
  }
  return std::nullopt;
}

void cut(ByteView rest, const std::function<std::optional<std::size_t>(ByteView)>& sizeOfNext,
         std::vector<Bytes>& parts) {
  while (!rest.empty()) {
    const std::size_t size = sizeOfNext(rest).value_or(rest.size());
    parts.emplace_back(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(size));
    rest = rest.subspan(size);
  }
}

bool isFrameHeader(const Bytes& part) {
  if (part.size() < 9 || part[0] != 0xFF) return false;
  return part[1] >= 0xC0 && part[1] <= 0xCF && part[1] != 0xC4 && part[1] != 0xC8 && part[1] != 0xCC;
}

bool isWholePng(ByteView picture) {
  ByteView rest = picture.subspan(kPngSignature.size());
  while (const auto size = chunkSize(rest)) {
    const ByteView chunk = rest.first(*size);
    if (bigEndian(chunk, *size - 4, 4) != checksumOf(chunk)) return false;
    rest = rest.subspan(*size);
    if (std::equal(chunk.begin() + 4, chunk.begin() + 8, "IEND")) return rest.empty();
  }
  return false;
}

bool isWholeJpeg(ByteView picture) {
  const std::vector<Bytes> parts = cutApart(picture);
  return parts.back() == Bytes{0xFF, 0xD9} && std::any_of(parts.begin(), parts.end(), isFrameHeader);
}

}  // namespace

std::uint32_t bigEndian(ByteView bytes, std::size_t offset, std::size_t width) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < width; ++i) number = number << 8 | bytes[offset + i];
  return number;
}

void putBigEndian(Bytes& bytes, std::size_t offset, std::size_t width, std::uint32_t number) {
  for (std::size_t i = 0; i < width; ++i)
    bytes[offset + i] = static_cast<std::uint8_t>(number >> 8 * (width - 1 - i));
}

std::optional<PictureFormat> formatOf(ByteView picture) {
  if (picture.size() >= kPngSignature.size() &&
      std::equal(kPngSignature.begin(), kPngSignature.end(), picture.begin())) {
    return PictureFormat::png;
  }
  const bool jpeg = picture.size() >= 3 && picture[0] == 0xFF && picture[1] == 0xD8 && picture[2] == 0xFF;
  return jpeg ? std::optional(PictureFormat::jpeg) : std::nullopt;
}

std::string extensionOf(ByteView picture) {
  const Codec* codec = codecForBytes(picture.first(std::min(picture.size(), kSignatureBytes)));
  const auto type = codec == nullptr ? std::nullopt : UTType::withIdentifier(codec->type);
  return type ? type->filenameExtensions().front() : "png";
}

std::vector<Bytes> cutApart(ByteView picture) {
  const auto format = formatOf(picture);
  std::vector<Bytes> parts;
  if (format == PictureFormat::png) {
    parts.emplace_back(kPngSignature.begin(), kPngSignature.end());
    cut(picture.subspan(kPngSignature.size()), chunkSize, parts);
  } else if (format == PictureFormat::jpeg) {
    cut(picture, segmentSize, parts);
  } else {
    parts.emplace_back(picture.begin(), picture.end());
  }
  return parts;
}

Bytes putTogether(const std::vector<Bytes>& parts) {
  Bytes picture;
  for (const Bytes& part : parts) picture.insert(picture.end(), part.begin(), part.end());
  return picture;
}

void repairChecksums(Bytes& picture) {
  if (formatOf(picture) != PictureFormat::png) return;
  std::size_t at = kPngSignature.size();
  while (const auto size = chunkSize(ByteView(picture).subspan(at))) {
    putBigEndian(picture, at + *size - 4, 4, checksumOf(ByteView(picture).subspan(at, *size)));
    at += *size;
  }
}

bool isWhole(ByteView picture) {
  const auto format = formatOf(picture);
  if (!format) return std::holds_alternative<Pixels>(decodeBytes(picture));
  return format == PictureFormat::png ? isWholePng(picture) : isWholeJpeg(picture);
}

std::optional<std::uint64_t> claimedPixels(ByteView picture) {
  const std::vector<Bytes> parts = cutApart(picture);
  if (formatOf(picture) == PictureFormat::png) {
    if (parts.size() < 2 || parts[1].size() < 16) return std::nullopt;
    return std::uint64_t{bigEndian(parts[1], 8, 4)} * bigEndian(parts[1], 12, 4);
  }
  const auto frame = std::find_if(parts.begin(), parts.end(), isFrameHeader);
  if (frame == parts.end()) return std::nullopt;
  return std::uint64_t{bigEndian(*frame, 5, 2)} * bigEndian(*frame, 7, 2);
}

}  // namespace ostra::test
