#include "platform/imageio/codecs/signatures.h"

#include <algorithm>

namespace ostra {
namespace {

bool hasText(FileBytes head, std::size_t offset, std::string_view text) {
  return head.size() >= offset + text.size() &&
         std::equal(text.begin(), text.end(), head.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace

bool matchesExr(FileBytes head) { return hasText(head, 0, "\x76\x2F\x31\x01"); }

bool matchesWebp(FileBytes head) { return hasText(head, 0, "RIFF") && hasText(head, 8, "WEBPVP8"); }

}  // namespace ostra
