#include "platform/colorsync/profile_facts.h"

#include <algorithm>
#include <cerrno>

#include <unistd.h>

#include "platform/colorsync/profile_text.h"
#include "platform/foundation/characters.h"
#include "platform/foundation/unicode.h"
#include "platform/graphics/icc_check.h"

namespace ostra {
namespace {

constexpr std::size_t kHeader = 128;
constexpr std::size_t kTagEntry = 12;
/// Far more than any profile has.
constexpr std::size_t kMostTags = 1000;
/// The largest seen, with forty languages, have four thousand bytes.
constexpr std::size_t kLargestText = std::size_t{64} << 10;

/// As many bytes as there are, up to `size`.
Bytes readAt(int file, std::size_t offset, std::size_t size) {
  Bytes bytes(size);
  std::size_t filled = 0;
  while (filled < size) {
    const ssize_t got =
        pread(file, bytes.data() + filled, size - filled, static_cast<off_t>(offset + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return bytes;
}

/// The bytes of a tag, as far as they are in the file; empty when there is no such tag.
Bytes readTag(int file, ByteView table, std::uint32_t signature) {
  for (std::size_t entry = 0; entry + kTagEntry <= table.size(); entry += kTagEntry) {
    if (iccUInt32(table, entry) != signature) continue;
    const std::size_t size = std::min<std::size_t>(iccUInt32(table, entry + 8), kLargestText);
    return readAt(file, iccUInt32(table, entry + 4), size);
  }
  return {};
}

std::string characters(ByteView bytes, std::size_t offset) {
  return {reinterpret_cast<const char*>(bytes.data()) + offset, 4};
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029;
}

/// Line feeds and other controls become blanks, and none stands at the ends: a name is one line.
std::string oneLine(std::string_view text) {
  std::string line;
  for (const char32_t character : charactersOf(text))
    appendCharacter(line, isControl(character) ? U' ' : character);
  return std::string(trimWhitespaceAndNewlines(line));
}

/// The multi-language tag, which version 2 has beside the plain one, knows more languages.
std::string descriptionIn(int file, ByteView table) {
  const std::vector<Language> languages = userLanguages();
  std::string text = oneLine(profileText(readTag(file, table, iccSignature("dscm")), languages));
  if (text.empty()) text = oneLine(profileText(readTag(file, table, iccSignature("desc")), languages));
  return text;
}

}  // namespace

std::optional<ProfileFacts> profileFacts(int file) {
  const Bytes header = readAt(file, 0, kHeader + 4);
  if (header.size() < kHeader + 4 || iccUInt32(header, 36) != iccSignature("acsp")) return std::nullopt;
  const std::size_t tags = std::min<std::size_t>(iccUInt32(header, kHeader), kMostTags);
  const Bytes table = readAt(file, kHeader + 4, tags * kTagEntry);
  ProfileFacts facts{descriptionIn(file, table), characters(header, 16), characters(header, 12)};
  return facts.description.empty() ? std::nullopt : std::optional(std::move(facts));
}

}  // namespace ostra
