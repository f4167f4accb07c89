#include "platform/imageio/codecs/signatures.h"

#include <algorithm>

namespace ostra {
namespace {

bool hasText(FileBytes head, std::size_t offset, std::string_view text) {
  return head.size() >= offset + text.size() &&
         std::equal(text.begin(), text.end(), head.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace

// Classic and big, in either byte order.
bool matchesTiff(FileBytes head) {
  using namespace std::string_view_literals;
  return hasText(head, 0, "II*\0"sv) || hasText(head, 0, "MM\0*"sv) || hasText(head, 0, "II+\0\x08\0"sv) ||
         hasText(head, 0, "MM\0+\0\x08"sv);
}

bool matchesWebp(FileBytes head) { return hasText(head, 0, "RIFF") && hasText(head, 8, "WEBPVP8"); }

}  // namespace ostra
