#include "platform/foundation/characters.h"

#include <array>

namespace ostra {
namespace {

using namespace std::string_view_literals;

constexpr std::array kBlanks = {
    "\t"sv,           "\n"sv,           "\v"sv,
    "\f"sv,           "\r"sv,           " "sv,
    "\xC2\x85"sv,     "\xC2\xA0"sv,     "\xE1\x9A\x80"sv,
    "\xE2\x80\x80"sv, "\xE2\x80\x81"sv, "\xE2\x80\x82"sv,
    "\xE2\x80\x83"sv, "\xE2\x80\x84"sv, "\xE2\x80\x85"sv,
    "\xE2\x80\x86"sv, "\xE2\x80\x87"sv, "\xE2\x80\x88"sv,
    "\xE2\x80\x89"sv, "\xE2\x80\x8A"sv, "\xE2\x80\x8B"sv,
    "\xE2\x80\xA8"sv, "\xE2\x80\xA9"sv, "\xE2\x80\xAF"sv,
    "\xE2\x81\x9F"sv, "\xE3\x80\x80"sv,
};

bool dropBlankAtStart(std::string_view& text) {
  for (const std::string_view blank : kBlanks) {
    if (!text.starts_with(blank)) continue;
    text.remove_prefix(blank.size());
    return true;
  }
  return false;
}

bool dropBlankAtEnd(std::string_view& text) {
  for (const std::string_view blank : kBlanks) {
    if (!text.ends_with(blank)) continue;
    text.remove_suffix(blank.size());
    return true;
  }
  return false;
}

}  // namespace

std::string_view trimWhitespaceAndNewlines(std::string_view text) {
  while (dropBlankAtStart(text)) {
  }
  while (dropBlankAtEnd(text)) {
  }
  return text;
}

}  // namespace ostra
