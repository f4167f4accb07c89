#include "platform/imageio/codecs/png_text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/imageio/codecs/inflate.h"
#include "platform/imageio/limits.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {
namespace {

// Takes what precedes the next NUL, and the NUL, off the front.
std::optional<ByteView> takeField(ByteView& rest) {
  const auto end = std::find(rest.begin(), rest.end(), 0);
  if (end == rest.end()) return std::nullopt;
  const auto size = static_cast<std::size_t>(end - rest.begin());
  const ByteView field = rest.first(size);
  rest = rest.subspan(size + 1);
  return field;
}

// The standard's rule: 1 to 79 printable Latin-1 characters, single blanks only between them. A text under
// any other keyword could not be written again.
bool isKeyword(ByteView keyword) {
  if (keyword.empty() || keyword.size() > 79 || keyword.front() == ' ' || keyword.back() == ' ') return false;
  if (asText(keyword).find("  ") != std::string_view::npos) return false;
  return std::all_of(keyword.begin(), keyword.end(),
                     [](std::uint8_t c) { return (c >= 32 && c <= 126) || c >= 161; });
}

std::optional<std::string> inflatedText(ByteView stream, std::size_t limit) {
  const auto bytes = inflateAll(stream, limit, LimitName::metadataBytes);
  if (!bytes) return std::nullopt;
  return std::string(asText(*bytes));
}

std::optional<std::string> compressedText(ByteView rest, std::size_t limit) {
  if (rest.empty() || rest[0] != 0) return std::nullopt;
  auto text = inflatedText(rest.subspan(1), limit);
  if (text) *text = utf8FromLatin1(*text);
  return text;
}

std::optional<PngText> internationalText(ByteView rest, std::size_t limit) {
  if (rest.size() < 2) return std::nullopt;
  const bool compressed = rest[0] == 1;
  rest = rest.subspan(2);
  const auto language = takeField(rest);
  const auto translated = language ? takeField(rest) : std::nullopt;
  if (!translated) return std::nullopt;
  PngText text;
  text.language = asText(*language);
  text.translatedKeyword = utf8FromUnknown(asText(*translated));
  const auto words = compressed ? inflatedText(rest, limit) : std::optional(std::string(asText(rest)));
  if (!words) return std::nullopt;
  text.text = *words;
  return text;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<PngText> readPngText(const PngChunk& chunk, std::size_t limit) {
  const bool known =
      chunk.type == pngType("tEXt") || chunk.type == pngType("zTXt") || chunk.type == pngType("iTXt");
  if (!known || !chunk.isIntact()) return std::nullopt;
  if (chunk.data.size() > limit) throw LimitExceeded{LimitName::metadataBytes};
  ByteView rest = chunk.data;
  const auto keyword = takeField(rest);
  if (!keyword || !isKeyword(*keyword)) return std::nullopt;
  std::optional<PngText> found;
  if (chunk.type == pngType("iTXt")) {
    found = internationalText(rest, limit);
  } else {
    const auto text =
        chunk.type == pngType("zTXt") ? compressedText(rest, limit) : utf8FromLatin1(asText(rest));
    if (text) found = PngText{.keyword = {}, .text = *text, .language = {}, .translatedKeyword = {}};
  }
  if (found) found->keyword = utf8FromLatin1(asText(*keyword));
  return found;
}

// A line with the kind, a line with the number of bytes, lines of hexadecimal digits.
std::optional<Bytes> readPngRawProfile(std::string_view text) {
  const auto skipLine = [&] {
    const std::size_t end = text.find('\n');
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  };
  if (text.starts_with('\n')) skipLine();
  skipLine();
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  std::size_t size = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), size).ec != std::errc()) return std::nullopt;
  skipLine();
  if (size > text.size() / 2) return std::nullopt;
  Bytes bytes;
  bytes.reserve(size);
  int high = -1;
  for (const char c : text) {
    if (bytes.size() == size) break;
    const int digit = hexDigit(c);
    if (digit < 0 && (c == '\n' || c == '\r' || c == ' ')) continue;
    if (digit < 0) return std::nullopt;
    if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high << 4 | digit));
    high = high >= 0 ? -1 : digit;
  }
  return bytes.size() == size ? std::optional(std::move(bytes)) : std::nullopt;
}

std::string pngRawProfile(std::string_view kind, ByteView bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kBytesALine = 36;
  std::string size = std::to_string(bytes.size());
  size.insert(0, size.size() < 8 ? 8 - size.size() : 0, ' ');
  std::string text = "\n" + std::string(kind) + "\n" + size;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i % kBytesALine == 0) text += '\n';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text + "\n";
}

bool isPngGroupKeyword(std::string_view keyword) {
  constexpr std::array<std::string_view, 10> kKeywords = {
      "Author",     "Comment",  "Copyright", "Creation Time", "Description",
      "Disclaimer", "Software", "Source",    "Title",         "Warning"};
  return std::find(kKeywords.begin(), kKeywords.end(), keyword) != kKeywords.end();
}

}  // namespace ostra
