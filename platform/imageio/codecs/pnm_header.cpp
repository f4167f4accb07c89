#include "platform/imageio/codecs/pnm_header.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/imageio/limits.h"

namespace ostra {
namespace {

constexpr std::uint32_t kLargestOfAll = 65535;

bool isSpace(std::uint8_t byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }
bool isDigit(std::uint8_t byte) { return byte >= '0' && byte <= '9'; }

bool isSound(const PnmHeader& header) {
  return header.width != 0 && header.height != 0 && header.largest != 0 && header.largest <= kLargestOfAll;
}

std::optional<PnmHeader> readPlainHeader(ByteView file, int kind) {
  PnmHeader header;
  header.isText = kind <= 3;
  header.isBits = kind % 3 == 1;
  header.samples = kind % 3 == 0 ? 3 : 1;
  PnmWords words(file, 2);
  const auto width = words.number(), height = words.number();
  const auto largest = header.isBits ? std::optional(1U) : words.number();
  if (!width || !height || !largest) return std::nullopt;
  header.width = *width;
  header.height = *height;
  header.largest = *largest;
  header.dataAt = words.at();
  header.comments = words.comments();
  return header;
}

struct TupleType {
  std::string_view name;
  unsigned samples;
  bool alpha;
};
// The last ones are what a file means that has no type.
constexpr std::array kTupleTypes{TupleType{"BLACKANDWHITE", 1, false},
                                 TupleType{"GRAYSCALE", 1, false},
                                 TupleType{"RGB", 3, false},
                                 TupleType{"BLACKANDWHITE_ALPHA", 2, true},
                                 TupleType{"GRAYSCALE_ALPHA", 2, true},
                                 TupleType{"RGB_ALPHA", 4, true},
                                 TupleType{"", 1, false},
                                 TupleType{"", 2, true},
                                 TupleType{"", 3, false},
                                 TupleType{"", 4, true}};

void setTupleType(PnmHeader& header, std::string_view name, std::uint32_t depth) {
  const auto found = std::find_if(kTupleTypes.begin(), kTupleTypes.end(), [&](const TupleType& type) {
    return type.name == name && type.samples == depth;
  });
  if (found == kTupleTypes.end()) return;
  header.samples = found->samples;
  header.hasAlpha = found->alpha;
}

// The value of a line that begins with this key.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
  if (!line.starts_with(key)) return std::nullopt;
  line.remove_prefix(key.size());
  if (!line.empty() && !isSpace(static_cast<std::uint8_t>(line.front()))) return std::nullopt;
  while (!line.empty() && isSpace(static_cast<std::uint8_t>(line.front()))) line.remove_prefix(1);
  while (!line.empty() && isSpace(static_cast<std::uint8_t>(line.back()))) line.remove_suffix(1);
  return line;
}

std::uint32_t numberIn(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  return PnmWords(ByteView(bytes, text.size())).number().value_or(0);
}

std::optional<PnmHeader> readArbitraryHeader(ByteView file) {
  PnmHeader header;
  header.largest = 0;
  std::uint32_t depth = 0;
  std::string type;
  PnmWords words(file, 3);
  while (words.at() < file.size()) {
    const std::string line = words.line();
    if (line.starts_with('#')) header.comments.push_back(line.substr(line.starts_with("# ") ? 2 : 1));
    if (const auto width = valueOf(line, "WIDTH")) header.width = numberIn(*width);
    if (const auto height = valueOf(line, "HEIGHT")) header.height = numberIn(*height);
    if (const auto samples = valueOf(line, "DEPTH")) depth = numberIn(*samples);
    if (const auto largest = valueOf(line, "MAXVAL")) header.largest = numberIn(*largest);
    if (const auto part = valueOf(line, "TUPLTYPE")) type += (type.empty() ? "" : " ") + std::string(*part);
    if (!valueOf(line, "ENDHDR")) continue;
    header.dataAt = words.at();
    setTupleType(header, type, depth);
    return header;
  }
  return std::nullopt;
}

// Where the samples of a picture end: in text where the next picture may begin.
std::optional<std::size_t> endOfPicture(ByteView file, const PnmHeader& header) {
  if (!header.isText) {
    const auto row = header.rowBytes();
    const auto size = row ? checkedProduct(*row, header.height) : std::nullopt;
    if (!size || *size > file.size() - header.dataAt) return std::nullopt;
    return header.dataAt + *size;
  }
  std::size_t at = header.dataAt;
  while (at < file.size() && file[at] != 'P') {
    const bool comment = file[at] == '#';
    while (comment && at < file.size() && file[at] != '\n') ++at;
    if (at < file.size()) ++at;
  }
  return at;
}

}  // namespace

std::optional<std::uint64_t> PnmHeader::rowBytes() const {
  if (isBits && !isText) return (std::uint64_t{width} + 7) / 8;
  return checkedProduct(width, samples, isDeep() ? 2 : 1);
}

std::optional<PnmHeader> readPnmHeader(ByteView file) {
  if (file.size() < 3 || file[0] != 'P' || file[1] < '1' || file[1] > '7') return std::nullopt;
  if (!isSpace(file[2]) && file[2] != '#') return std::nullopt;
  // A line for itself: what XV calls P7 goes on in the same.
  if (file[1] == '7' && file[2] != '\n') return std::nullopt;
  auto header = file[1] == '7' ? readArbitraryHeader(file) : readPlainHeader(file, file[1] - '0');
  if (!header || !isSound(*header)) return std::nullopt;
  return header;
}

std::uint32_t countPnmPictures(ByteView file, const PnmHeader& first, std::uint32_t most) {
  std::uint32_t count = 1;
  std::optional<PnmHeader> header = first;
  while (count < most) {
    const auto end = endOfPicture(file, *header);
    if (!end) return count;
    file = file.subspan(*end);
    while (!file.empty() && isSpace(file.front())) file = file.subspan(1);
    header = readPnmHeader(file);
    if (!header) return count;
    ++count;
  }
  return count;
}

std::optional<std::uint32_t> PnmWords::number() {
  constexpr std::size_t kMostDigits = 9;
  skipSpace();
  std::uint32_t value = 0;
  const std::size_t begin = at_;
  while (at_ < text_.size() && isDigit(text_[at_]) && at_ - begin < kMostDigits)
    value = value * 10 + (text_[at_++] - '0');
  if (at_ == begin) return std::nullopt;
  if (at_ == text_.size()) return value;
  if (text_[at_] == '#') skipComment();
  if (at_ < text_.size() && !isSpace(text_[at_])) return std::nullopt;
  at_ = std::min(at_ + 1, text_.size());
  return value;
}

std::optional<std::uint32_t> PnmWords::bit() {
  skipSpace();
  if (at_ == text_.size() || (text_[at_] != '0' && text_[at_] != '1')) return std::nullopt;
  return text_[at_++] - '0';
}

std::string PnmWords::line() {
  const ByteView rest = text_.subspan(at_);
  const auto end = std::find(rest.begin(), rest.end(), '\n');
  at_ += static_cast<std::size_t>(end - rest.begin()) + (end == rest.end() ? 0 : 1);
  return {rest.begin(), end};
}

void PnmWords::skipSpace() {
  while (at_ < text_.size() && (isSpace(text_[at_]) || text_[at_] == '#')) {
    if (text_[at_] == '#') {
      skipComment();
    } else {
      ++at_;
    }
  }
}

// Up to the end of its line, which stays.
void PnmWords::skipComment() {
  ++at_;
  if (at_ < text_.size() && text_[at_] == ' ') ++at_;
  const ByteView rest = text_.subspan(at_);
  const auto end =
      std::find_if(rest.begin(), rest.end(), [](std::uint8_t byte) { return byte == '\n' || byte == '\r'; });
  comments_.emplace_back(rest.begin(), end);
  at_ += static_cast<std::size_t>(end - rest.begin());
}

}  // namespace ostra
