#include "platform/imageio/codecs/hdr_header.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

// Up to the end of the line, which is taken too; nothing without one.
std::optional<std::string_view> takeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

std::string_view takeWord(std::string_view& rest) {
  rest = trimmed(rest);
  const std::string_view word = rest.substr(0, rest.find_first_of(" \t"));
  rest.remove_prefix(word.size());
  return word;
}

template <class Number>
std::optional<Number> numberOf(std::string_view word) {
  Number number{};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  const bool isWhole = error == std::errc() && end == word.data() + word.size() && !word.empty();
  return isWhole ? std::optional(number) : std::nullopt;
}

std::optional<std::array<double, 8>> primariesOf(std::string_view text) {
  std::array<double, 8> numbers{};
  for (double& number : numbers) {
    const auto read = numberOf<double>(takeWord(text));
    if (!read) return std::nullopt;
    number = *read;
  }
  return numbers;
}

// Such as "-Y 480 +X 640": Y grows upwards, so that -Y begins at the top.
bool readResolution(std::string_view line, HdrHeader& header) {
  constexpr std::uint32_t kLongest = 1u << 30;
  for (int i = 0; i < 2; ++i) {
    const std::string_view axis = takeWord(line);
    const auto length = numberOf<std::uint32_t>(takeWord(line));
    if (axis.size() != 2 || !length || *length == 0 || *length > kLongest) return false;
    if (axis[0] != '+' && axis[0] != '-') return false;
    const bool isX = axis[1] == 'X';
    if (!isX && axis[1] != 'Y') return false;
    if (i == 0) header.alongColumns = isX;
    (isX ? header.width : header.height) = *length;
    (isX ? header.fromRight : header.fromBottom) = isX == (axis[0] == '-');
  }
  return header.width > 0 && header.height > 0 && trimmed(line).empty();
}

HdrLine parsed(std::string_view line) {
  if (line.starts_with('#')) return {"", std::string(trimmed(line.substr(1)))};
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return {"", ""};
  return {std::string(trimmed(line.substr(0, equals))), std::string(trimmed(line.substr(equals + 1)))};
}

}  // namespace

std::optional<HdrHeader> readHdrHeader(ByteView file) {
  // Far more than any program writes; a file without an empty line would be searched to its end.
  constexpr std::size_t kMost = 1 << 20;
  const std::string_view all = asText(file.first(std::min(file.size(), kMost)));
  std::string_view rest = all;
  HdrHeader header;
  auto line = takeLine(rest);
  const std::size_t begin = all.size() - rest.size();
  if (!line || !line->starts_with("#?")) return std::nullopt;
  while ((line = takeLine(rest)) && !line->empty())
    header.lines = file.subspan(begin, all.size() - rest.size() - begin);
  const auto resolution = line ? takeLine(rest) : std::nullopt;
  if (!resolution || !readResolution(*resolution, header)) return std::nullopt;
  for (const HdrLine& told : hdrLines(header)) {
    if (told.name == "FORMAT") {
      if (told.text != "32-bit_rle_rgbe" && told.text != "32-bit_rle_xyze") return std::nullopt;
      header.isXyz = told.text == "32-bit_rle_xyze";
    }
    if (told.name == "PRIMARIES") header.primaries = primariesOf(told.text);
  }
  header.pixels = file.subspan(all.size() - rest.size());
  return header;
}

std::vector<HdrLine> hdrLines(const HdrHeader& header) {
  std::vector<HdrLine> lines;
  std::string_view rest = asText(header.lines);
  while (const auto line = takeLine(rest)) {
    HdrLine told = parsed(*line);
    if (!told.name.empty() || !told.text.empty()) lines.push_back(std::move(told));
  }
  return lines;
}

}  // namespace ostra
