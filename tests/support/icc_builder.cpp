#include "tests/support/icc_builder.h"

#include <algorithm>

namespace ostra::test {
namespace {

void putText(Bytes& bytes, std::size_t offset, std::string_view text) {
  std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

void appendNumber(Bytes& bytes, std::uint32_t number) {
  bytes.resize(bytes.size() + 4);
  putNumber(bytes, bytes.size() - 4, number);
}

void appendUnits(Bytes& bytes, std::u16string_view units) {
  for (const char16_t unit : units) {
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
  }
}

}  // namespace

void putNumber(Bytes& bytes, std::size_t offset, std::uint32_t number) {
  for (std::size_t i = 0; i < 4; ++i) bytes[offset + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
}

Bytes iccFile(const IccParts& parts) {
  Bytes file(128);
  file[8] = 2;
  putText(file, 12, parts.profileClass);
  putText(file, 16, parts.space);
  putText(file, 20, "XYZ ");
  putText(file, 36, "acsp");
  appendNumber(file, static_cast<std::uint32_t>(parts.tags.size()));
  std::size_t offset = file.size() + 12 * parts.tags.size();
  for (const auto& [signature, bytes] : parts.tags) {
    file.resize(file.size() + 4);
    putText(file, file.size() - 4, signature);
    appendNumber(file, static_cast<std::uint32_t>(offset));
    appendNumber(file, static_cast<std::uint32_t>(bytes.size()));
    offset += (bytes.size() + 3) / 4 * 4;
  }
  for (const auto& [signature, bytes] : parts.tags) {
    file.insert(file.end(), bytes.begin(), bytes.end());
    file.resize((file.size() + 3) / 4 * 4);
  }
  putNumber(file, 0, static_cast<std::uint32_t>(file.size()));
  return file;
}

Bytes multiLanguageTag(const std::vector<std::pair<std::string, std::u16string>>& records) {
  Bytes tag = {'m', 'l', 'u', 'c', 0, 0, 0, 0};
  appendNumber(tag, static_cast<std::uint32_t>(records.size()));
  appendNumber(tag, 12);
  std::size_t offset = 16 + 12 * records.size();
  for (const auto& [language, text] : records) {
    tag.resize(tag.size() + 4);
    putText(tag, tag.size() - 4, language);
    appendNumber(tag, static_cast<std::uint32_t>(2 * text.size()));
    appendNumber(tag, static_cast<std::uint32_t>(offset));
    offset += 2 * text.size();
  }
  for (const auto& [language, text] : records) appendUnits(tag, text);
  return tag;
}

Bytes descriptionTag(std::string_view ascii, std::u16string_view unicode) {
  Bytes tag = {'d', 'e', 's', 'c', 0, 0, 0, 0};
  appendNumber(tag, static_cast<std::uint32_t>(ascii.size() + 1));
  tag.insert(tag.end(), ascii.begin(), ascii.end());
  tag.push_back(0);
  appendNumber(tag, 0);
  appendNumber(tag, static_cast<std::uint32_t>(unicode.empty() ? 0 : unicode.size() + 1));
  if (!unicode.empty()) appendUnits(tag, std::u16string(unicode) + u'\0');
  tag.resize(tag.size() + 70);  // the script part
  return tag;
}

}  // namespace ostra::test
