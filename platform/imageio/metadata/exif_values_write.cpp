#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/imageio/metadata/exif_values.h"
#include "platform/imageio/metadata/rational.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {

namespace {

struct FieldWriter {
  ByteOrder order;
  ExifField field;

  void count() { field.count = static_cast<std::uint32_t>(field.bytes.size() / sizeOfType(field.type)); }
  bool integer(std::int64_t value);
  bool rational(double value);
  void put32(std::uint32_t value);
  void text(std::string_view words) {
    const ByteView bytes = asBytes(words);
    field.bytes.insert(field.bytes.end(), bytes.begin(), bytes.end());
  }
};

void FieldWriter::put32(std::uint32_t value) {
  field.bytes.resize(field.bytes.size() + 4);
  write32(field.bytes, field.bytes.size() - 4, value, order);
}

struct IntegerRange {
  std::int64_t least = 0, most = -1;
  bool holds(std::int64_t value) const { return value >= least && value <= most; }
};

IntegerRange rangeOf(std::uint16_t type) {
  switch (type) {
    case kByte:
    case kUndefined:
      return {0, 0xFF};
    case kSignedByte:
      return {-0x80, 0x7F};
    case kShort:
      return {0, 0xFFFF};
    case kSignedShort:
      return {-0x8000, 0x7FFF};
    case kLong:
      return {0, 0xFFFFFFFF};
    case kSignedLong:
      return {-0x80000000LL, 0x7FFFFFFF};
    default:
      return {};
  }
}

bool FieldWriter::integer(std::int64_t value) {
  if (!rangeOf(field.type).holds(value)) return false;
  const std::size_t size = sizeOfType(field.type), at = field.bytes.size();
  field.bytes.resize(at + size);
  if (size == 1) field.bytes[at] = static_cast<std::uint8_t>(value);
  if (size == 2) write16(field.bytes, at, static_cast<std::uint16_t>(value), order);
  if (size == 4) write32(field.bytes, at, static_cast<std::uint32_t>(value), order);
  return true;
}

bool FieldWriter::rational(double value) {
  const bool hasSign = field.type == kSignedRational;
  if (value < 0 && !hasSign) return false;
  const auto fraction =
      rationalFrom(value, hasSign ? std::numeric_limits<std::int32_t>::max()
                                  : std::int64_t{std::numeric_limits<std::uint32_t>::max()});
  if (!fraction) return false;
  put32(static_cast<std::uint32_t>(fraction->numerator));
  put32(static_cast<std::uint32_t>(fraction->denominator));
  return true;
}

std::optional<std::int64_t> wholeNumber(const Value& value) {
  if (const auto* integer = value.get<std::int64_t>()) return *integer;
  const auto number = value.number();
  if (!number || *number != std::floor(*number) || std::fabs(*number) > 1e15) return std::nullopt;
  return static_cast<std::int64_t>(*number);
}

/// `value` as the elements of an array, even where it is a single one.
Array elements(const Value& value) {
  const auto* array = value.get<Array>();
  return array ? *array : Array{value};
}

bool writeIntegers(FieldWriter& writer, const Array& values) {
  for (const Value& value : values) {
    const auto number = wholeNumber(value);
    if (!number || !writer.integer(*number)) return false;
  }
  return !values.empty();
}

bool writeReals(FieldWriter& writer, const Array& values) {
  for (const Value& value : values) {
    const auto number = value.number();
    if (!number || !writer.rational(*number)) return false;
  }
  return !values.empty();
}

bool writeText(FieldWriter& writer, const Value& value) {
  const auto* words = value.get<std::string>();
  if (!words || words->find('\0') != std::string::npos) return false;
  writer.text(*words);
  writer.field.bytes.push_back(0);
  return true;
}

bool writeData(FieldWriter& writer, const Value& value) {
  const auto* bytes = value.get<Bytes>();
  if (bytes) writer.field.bytes = *bytes;
  return bytes && !bytes->empty();
}

bool writeVersion(FieldWriter& writer, const Value& value) {
  const Array values = elements(value);
  std::array<std::int64_t, 3> parts{};
  if (values.size() > parts.size()) return false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto number = wholeNumber(values[i]);
    if (!number || *number < 0 || *number > (i == 0 ? 99 : 9)) return false;
    parts[i] = *number;
  }
  for (const std::int64_t digit : {parts[0] / 10, parts[0] % 10, parts[1], parts[2]}) {
    writer.field.bytes.push_back(static_cast<std::uint8_t>('0' + digit));
  }
  return true;
}

bool writeComment(FieldWriter& writer, const Value& value) {
  using namespace std::string_view_literals;
  const auto* words = value.get<std::string>();
  if (!words || !isUtf8(*words)) return false;
  const bool ascii = isAscii(*words);
  writer.text(ascii ? "ASCII\0\0\0"sv : "UNICODE\0"sv);
  writer.text(ascii ? std::string_view(*words) : asText(utf16FromUtf8(*words, writer.order)));
  return true;
}

/// Whole degrees and minutes, and seconds in millionths: 0.03 millimetres on the ground.
bool writeDegrees(FieldWriter& writer, const Value& value) {
  const auto number = value.number();
  if (!number || !(*number >= 0 && *number <= 360)) return false;
  const std::int64_t millionths = std::llround(*number * 3600e6);
  const std::int64_t degrees = millionths / 3600'000'000, minutes = millionths / 60'000'000 % 60;
  return writer.rational(static_cast<double>(degrees)) && writer.rational(static_cast<double>(minutes)) &&
         writer.rational(static_cast<double>(millionths % 60'000'000) / 1e6);
}

/// Takes a number and, where one follows, a colon off the front of `words`. Independent of the locale.
std::optional<double> takeNumber(std::string_view& words) {
  double number = 0;
  const auto [end, error] =
      std::from_chars(words.data(), words.data() + words.size(), number, std::chars_format::fixed);
  if (error != std::errc()) return std::nullopt;
  words.remove_prefix(static_cast<std::size_t>(end - words.data()));
  if (words.starts_with(':')) words.remove_prefix(1);
  return number;
}

bool writeTime(FieldWriter& writer, const Value& value) {
  const auto* words = value.get<std::string>();
  if (!words) return false;
  std::string_view rest = *words;
  for (int part = 0; part < 3; ++part) {
    const auto number = takeNumber(rest);
    if (!number || !writer.rational(*number)) return false;
  }
  return rest.empty();
}

bool writeForm(FieldWriter& writer, ExifForm form, const Value& value) {
  switch (form) {
    case ExifForm::integer:
      return !value.get<Array>() && writeIntegers(writer, {value});
    case ExifForm::real:
      return !value.get<Array>() && writeReals(writer, {value});
    case ExifForm::integers:
      return writeIntegers(writer, elements(value));
    case ExifForm::reals:
      return writeReals(writer, elements(value));
    case ExifForm::text:
      return writeText(writer, value);
    case ExifForm::data:
      return writeData(writer, value);
    case ExifForm::version:
      return writeVersion(writer, value);
    case ExifForm::comment:
      return writeComment(writer, value);
    case ExifForm::degrees:
      return writeDegrees(writer, value);
    case ExifForm::time:
      return writeTime(writer, value);
  }
  return false;
}

/// The types that a field may be of, best first.
std::array<std::uint16_t, 3> candidates(const ExifTag& tag, std::uint16_t oldType) {
  const bool numbers = tag.form == ExifForm::integer || tag.form == ExifForm::integers;
  const bool fractions = tag.form == ExifForm::real || tag.form == ExifForm::reals;
  if (numbers) {
    const std::uint16_t kept = rangeOf(oldType).most > 0 ? oldType : std::uint16_t{tag.type};
    return {kept, tag.type, tag.type == kShort ? std::uint16_t{kLong} : std::uint16_t{tag.type}};
  }
  if (fractions && oldType == kSignedRational) return {kSignedRational, tag.type, tag.type};
  return {tag.type, tag.type, tag.type};
}

}  // namespace

std::optional<ExifField> makeExifField(const ExifTag& tag, const Value& value, ByteOrder order,
                                       std::uint16_t oldType) {
  for (const std::uint16_t type : candidates(tag, oldType)) {
    FieldWriter writer{order, {.tag = tag.tag, .type = type, .count = 0, .bytes = {}}};
    if (!writeForm(writer, tag.form, value)) continue;
    writer.count();
    return writer.field;
  }
  return std::nullopt;
}

}  // namespace ostra
