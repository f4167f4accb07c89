#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>

#include "platform/imageio/metadata/exif_values.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {

namespace {

/// A larger value is nothing that anybody reads one by one; it stays in the block.
constexpr std::size_t kLargestValue = 64 << 10;

struct EntryReader {
  ByteView bytes;
  ByteOrder order;
  std::uint16_t type;
  std::size_t count;

  std::optional<std::int64_t> integer(std::size_t index) const;
  std::optional<double> real(std::size_t index) const;
  bool isText() const { return type == kAscii || type == kUtf8 || type == kUndefined || type == kByte; }
};

std::optional<std::int64_t> EntryReader::integer(std::size_t index) const {
  switch (type) {
    case kByte:
    case kUndefined:
      return bytes[index];
    case kSignedByte:
      return static_cast<std::int8_t>(bytes[index]);
    case kShort:
      return read16(bytes, 2 * index, order);
    case kSignedShort:
      return static_cast<std::int16_t>(read16(bytes, 2 * index, order));
    case kLong:
    case kIfd:
      return read32(bytes, 4 * index, order);
    case kSignedLong:
      return static_cast<std::int32_t>(read32(bytes, 4 * index, order));
    default:
      return std::nullopt;
  }
}

double doubleAt(ByteView bytes, std::size_t at, ByteOrder order) {
  const std::uint64_t first = read32(bytes, at, order), second = read32(bytes, at + 4, order);
  return std::bit_cast<double>(order == ByteOrder::big ? first << 32 | second : second << 32 | first);
}

std::optional<double> finite(double value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<double> EntryReader::real(std::size_t index) const {
  if (type == kFloat) return finite(std::bit_cast<float>(read32(bytes, 4 * index, order)));
  if (type == kDouble) return finite(doubleAt(bytes, 8 * index, order));
  if (type == kRational || type == kSignedRational) {
    const std::uint32_t numerator = read32(bytes, 8 * index, order),
                        denominator = read32(bytes, 8 * index + 4, order);
    if (denominator == 0) return std::nullopt;
    if (type == kRational) return static_cast<double>(numerator) / denominator;
    return static_cast<double>(static_cast<std::int32_t>(numerator)) / static_cast<std::int32_t>(denominator);
  }
  if (type == kUndefined) return std::nullopt;
  if (const auto whole = integer(index)) return static_cast<double>(*whole);
  return std::nullopt;
}

std::optional<Value> integers(const EntryReader& reader) {
  Array values;
  for (std::size_t i = 0; i < reader.count; ++i) {
    const auto number = reader.integer(i);
    if (!number) return std::nullopt;
    values.emplace_back(*number);
  }
  return Value(std::move(values));
}

std::optional<Value> reals(const EntryReader& reader) {
  Array values;
  for (std::size_t i = 0; i < reader.count; ++i) {
    const auto number = reader.real(i);
    if (!number) return std::nullopt;
    values.emplace_back(*number);
  }
  return Value(std::move(values));
}

std::optional<Value> text(const EntryReader& reader) {
  if (!reader.isText()) return std::nullopt;
  const std::string_view whole = asText(reader.bytes);
  return Value(utf8FromUnknown(whole.substr(0, whole.find('\0'))));
}

/// The first two digits are one number, each later one its own, zeros at the end left out: "0230" is 2.3.
std::optional<Value> version(const EntryReader& reader) {
  if (reader.bytes.size() != 4 || !reader.isText()) return std::nullopt;
  int digits[4];
  for (std::size_t i = 0; i < 4; ++i) {
    digits[i] = reader.bytes[i] - '0';
    if (digits[i] < 0 || digits[i] > 9) return std::nullopt;
  }
  Array values{Value(digits[0] * 10 + digits[1]), Value(digits[2])};
  if (digits[3] != 0) values.emplace_back(digits[3]);
  return Value(std::move(values));
}

std::optional<Value> comment(const EntryReader& reader) {
  constexpr std::size_t kPrefix = 8;
  if (!reader.isText() || reader.bytes.size() <= kPrefix) return std::nullopt;
  using namespace std::string_view_literals;
  const std::string_view encoding = asText(reader.bytes.first(kPrefix));
  const ByteView rest = reader.bytes.subspan(kPrefix);
  std::string words;
  if (encoding == "UNICODE\0"sv) {
    words = utf8FromUtf16(rest, reader.order);
  } else if (encoding == "ASCII\0\0\0"sv || encoding == "\0\0\0\0\0\0\0\0"sv) {
    words = utf8FromUnknown(asText(rest));
  } else {
    return std::nullopt;
  }
  words.resize(std::min(words.find('\0'), words.size()));
  if (words.empty()) return std::nullopt;
  return Value(std::move(words));
}

std::optional<Value> degrees(const EntryReader& reader) {
  if (reader.count > 3) return std::nullopt;
  double sum = 0;
  double unit = 1;
  for (std::size_t i = 0; i < reader.count; ++i, unit /= 60) {
    const auto part = reader.real(i);
    if (!part) return std::nullopt;
    sum += *part * unit;
  }
  return Value(sum);
}

std::optional<Value> time(const EntryReader& reader) {
  if (reader.count != 3) return std::nullopt;
  const auto hours = reader.real(0), minutes = reader.real(1), seconds = reader.real(2);
  if (!hours || !minutes || !seconds) return std::nullopt;
  const bool whole = *hours == std::floor(*hours) && *minutes == std::floor(*minutes);
  if (!whole || *hours < 0 || *hours > 99 || *minutes < 0 || *minutes > 99 || *seconds < 0 ||
      *seconds >= 99.5) {
    return std::nullopt;
  }
  // Not as a floating-point number: its decimal mark would depend on the locale.
  const long long millionths = std::llround(*seconds * 1e6);
  char buffer[64];
  const int length =
      std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02lld.%06lld", static_cast<int>(*hours),
                    static_cast<int>(*minutes), millionths / 1'000'000, millionths % 1'000'000);
  std::string words(buffer, static_cast<std::size_t>(length));
  words.erase(words.find_last_not_of('0') + 1);
  if (words.back() == '.') words.pop_back();
  return Value(std::move(words));
}

}  // namespace

std::optional<Value> readExifValue(ByteView block, ByteOrder order, const ExifEntry& entry, ExifForm form) {
  if (!entry.value || entry.value->size > kLargestValue) return std::nullopt;
  const ByteView bytes = block.subspan(entry.value->offset, entry.value->size);
  const EntryReader reader{bytes, order, entry.type, entry.count};
  switch (form) {
    case ExifForm::integer:
      if (const auto number = reader.integer(0)) return Value(*number);
      return std::nullopt;
    case ExifForm::real:
      if (const auto number = reader.real(0)) return Value(*number);
      return std::nullopt;
    case ExifForm::data:
      if (entry.type != kUndefined && entry.type != kByte) return std::nullopt;
      return Value(Bytes(bytes.begin(), bytes.end()));
    case ExifForm::integers:
      return integers(reader);
    case ExifForm::reals:
      return reals(reader);
    case ExifForm::text:
      return text(reader);
    case ExifForm::version:
      return version(reader);
    case ExifForm::comment:
      return comment(reader);
    case ExifForm::degrees:
      return degrees(reader);
    case ExifForm::time:
      return time(reader);
  }
  return std::nullopt;
}

}  // namespace ostra
