#include "platform/colorsync/profile_text.h"

#include <algorithm>
#include <optional>

#include "platform/graphics/icc_check.h"
#include "platform/graphics/icc_text.h"

namespace ostra {
namespace {

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
    if (const Record* record = recordIn(records, language)) return iccUtf16Text(record->text);
  }
  return records.empty() ? std::string() : iccUtf16Text(records.front().text);
}

/// textDescriptionType of version 2: the length of an ASCII text, that text, a language code, the number of
/// UTF-16 units, those.
std::string ofDescription(ByteView tag) {
  if (tag.size() < 12) return {};
  const std::size_t length = std::min<std::size_t>(iccUInt32(tag, 8), tag.size() - 12);
  const ByteView rest = tag.subspan(12 + length);
  if (rest.size() >= 8) {
    const std::size_t units = std::min<std::size_t>(iccUInt32(rest, 4), (rest.size() - 8) / 2);
    if (std::string text = iccUtf16Text(rest.subspan(8, 2 * units)); !text.empty()) return text;
  }
  return iccAsciiText(tag.subspan(12, length));
}

}  // namespace

std::string profileText(ByteView tag, const std::vector<Language>& languages) {
  if (tag.size() < 8) return {};
  if (iccUInt32(tag, 0) == iccSignature("mluc")) return ofLanguages(tag, languages);
  return iccUInt32(tag, 0) == iccSignature("desc") ? ofDescription(tag) : std::string();
}

}  // namespace ostra
