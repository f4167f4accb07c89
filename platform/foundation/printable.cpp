#include "platform/foundation/printable.h"

#include <algorithm>

namespace ostra {
namespace {

bool isControl(unsigned char c) { return (c < 0x20 && c != '\n') || c == 0x7F; }

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
    const bool isC1 = c == 0xC2 && next >= 0x80 && next < 0xA0;
    result += isControl(c) || isC1 ? '?' : text[i];
    if (isC1) ++i;
  }
  return result;
}

std::string printableLine(std::string_view text) {
  std::string line = printable(text);
  std::replace(line.begin(), line.end(), '\n', '?');
  return line;
}

}  // namespace ostra
