#include "platform/colorsync/profile_text.h"

#include <algorithm>
#include <optional>

#include "platform/foundation/unicode.h"
#include "platform/graphics/icc_check.h"

namespace ostra {
namespace {

bool isHigh(char32_t unit) { return unit >> 10 == 0xD800 >> 10; }
bool isLow(char32_t unit) { return unit >> 10 == 0xDC00 >> 10; }

/// Halves of pairs that stand alone are left out.
std::string fromUtf16(ByteView units) {
  std::string text;
  for (std::size_t at = 0; at + 2 <= units.size(); at += 2) {
    const char32_t unit = iccUInt16(units, at);
    const char32_t next = at + 4 <= units.size() ? iccUInt16(units, at + 2) : 0;
    if (unit == 0) break;
    if (isHigh(unit) && isLow(next)) {
      appendCharacter(text, 0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF));
      at += 2;
    } else if (!isHigh(unit) && !isLow(unit)) {
      appendCharacter(text, unit);
    }
  }
  return text;
}

struct Record {
  Language language;
  ByteView text;
};

/// Two letters; padded with blanks or NULs where there is no code.
std::string codeAt(ByteView tag, std::size_t offset) {
  std::string code{static_cast<char>(tag[offset]), static_cast<char>(tag[offset + 1])};
  return code == std::string(2, '\0') || code == "  " ? "" : code;
}

/// multiLocalizedUnicodeType: a count, the size of a record (12), and records of language, country, length
/// and offset. Those whose text lies outside the tag or is empty are left out.
std::vector<Record> recordsOf(ByteView tag) {
  if (tag.size() < 16 || iccUInt32(tag, 12) != 12) return {};
  const std::size_t count = std::min<std::size_t>(iccUInt32(tag, 8), (tag.size() - 16) / 12);
  std::vector<Record> records;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = 16 + 12 * i;
    const std::size_t length = iccUInt32(tag, at + 4), offset = iccUInt32(tag, at + 8);
    if (length < 2 || offset > tag.size() || length > tag.size() - offset) continue;
    records.push_back({{codeAt(tag, at), codeAt(tag, at + 2)}, tag.subspan(offset, length)});
  }
  return records;
}

/// Same language and country before same language.
const Record* recordIn(const std::vector<Record>& records, const Language& wanted) {
  const auto find = [&records](const auto& isIt) {
    const auto found = std::find_if(records.begin(), records.end(), isIt);
    return found != records.end() ? &*found : nullptr;
  };
  if (const auto* same = find([&](const Record& record) { return record.language == wanted; })) return same;
  return find([&](const Record& record) { return record.language.language == wanted.language; });
}

std::string ofLanguages(ByteView tag, std::vector<Language> languages) {
  const std::vector<Record> records = recordsOf(tag);
  languages.push_back({"en", "US"});
  for (const Language& language : languages) {
    if (const Record* record = recordIn(records, language)) return fromUtf16(record->text);
  }
  return records.empty() ? std::string() : fromUtf16(records.front().text);
}

/// textDescriptionType of version 2: the length of an ASCII text, that text, a language code, the number of
/// UTF-16 units, those. Bytes beyond ASCII count as Latin-1.
std::string ofDescription(ByteView tag) {
  if (tag.size() < 12) return {};
  const std::size_t length = std::min<std::size_t>(iccUInt32(tag, 8), tag.size() - 12);
  const ByteView rest = tag.subspan(12 + length);
  if (rest.size() >= 8) {
    const std::size_t units = std::min<std::size_t>(iccUInt32(rest, 4), (rest.size() - 8) / 2);
    if (std::string text = fromUtf16(rest.subspan(8, 2 * units)); !text.empty()) return text;
  }
  std::string text;
  for (const std::uint8_t character : tag.subspan(12, length)) {
    if (character == 0) break;
    appendCharacter(text, character);
  }
  return text;
}

}  // namespace

std::string profileText(ByteView tag, const std::vector<Language>& languages) {
  if (tag.size() < 8) return {};
  if (iccUInt32(tag, 0) == iccSignature("mluc")) return ofLanguages(tag, languages);
  return iccUInt32(tag, 0) == iccSignature("desc") ? ofDescription(tag) : std::string();
}

}  // namespace ostra
