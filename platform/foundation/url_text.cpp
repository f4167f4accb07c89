#include "platform/foundation/url_text.h"

#include <algorithm>

namespace ostra {
namespace {

constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
constexpr std::string_view kPathMarks = "-._~!$&'()*+,=:@/";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isSchemeCharacter(char c) { return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.'; }

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::optional<unsigned> digitValue(char c) {
  const std::size_t value = kHexadecimal.find(c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c);
  if (value == std::string_view::npos) return std::nullopt;
  return static_cast<unsigned>(value);
}

}  // namespace

std::string percentEncodedPath(std::string_view path) {
  std::string text;
  text.reserve(path.size());
  for (const char c : path) {
    if (isLetter(c) || isDigit(c) || kPathMarks.find(c) != std::string_view::npos) {
      text += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    text += '%';
    text += kHexadecimal[byte >> 4];
    text += kHexadecimal[byte & 15];
  }
  return text;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const auto high = digitValue(text[i + 1]);
    const auto low = digitValue(text[i + 2]);
    if (!high || !low) return std::nullopt;
    bytes += static_cast<char>(*high << 4 | *low);
    i += 2;
  }
  return bytes;
}

std::optional<URLParts> splitAbsoluteURL(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == 0 || colon == std::string_view::npos || !isLetter(text[0])) return std::nullopt;
  const std::string_view scheme = text.substr(0, colon);
  if (!std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter)) return std::nullopt;

  URLParts parts;
  std::transform(scheme.begin(), scheme.end(), std::back_inserter(parts.scheme), lowered);
  std::string_view rest = text.substr(colon + 1);
  rest = rest.substr(0, rest.find_first_of("?#"));
  if (rest.starts_with("//")) {
    const std::size_t slash = std::min(rest.find('/', 2), rest.size());
    parts.authority = rest.substr(2, slash - 2);
    rest.remove_prefix(slash);
  }
  parts.path = rest;
  return parts;
}

}  // namespace ostra
