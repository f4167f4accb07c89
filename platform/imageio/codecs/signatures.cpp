#include "platform/imageio/codecs/signatures.h"

#include <algorithm>

namespace ostra {

using namespace std::string_view_literals;

namespace {

bool hasText(FileBytes head, std::size_t offset, std::string_view text) {
  const auto same = [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; };
  return head.size() >= offset + text.size() &&
         std::equal(text.begin(), text.end(), head.begin() + static_cast<std::ptrdiff_t>(offset), same);
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

bool matchesWebp(FileBytes head) { return hasText(head, 0, "RIFF") && hasText(head, 8, "WEBPVP8"); }

}  // namespace ostra
