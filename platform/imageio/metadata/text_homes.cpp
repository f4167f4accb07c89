#include "platform/imageio/metadata/text_homes.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/imageio/metadata/exif_block.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

struct TextHome {
  std::string_view keyword, group, key;
};
constexpr std::string_view kCreationTime = "Creation Time";
constexpr std::array kTextHomes = {
    TextHome{"Title", kCGImagePropertyIPTCDictionary, "ObjectName"},
    TextHome{"Description", kCGImagePropertyIPTCDictionary, "Caption/Abstract"},
    TextHome{"Author", kCGImagePropertyTIFFDictionary, "Artist"},
    TextHome{"Copyright", kCGImagePropertyTIFFDictionary, "Copyright"},
    TextHome{"Software", kCGImagePropertyTIFFDictionary, "Software"},
    TextHome{"Comment", kCGImagePropertyExifDictionary, "UserComment"},
    TextHome{kCreationTime, kCGImagePropertyExifDictionary, "DateTimeOriginal"},
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// "2024:05:06 07:08:09" from that, or with other marks as in ISO 8601. A time with a zone or a fraction, or
/// in words, has more or less to say than the key holds.
std::string exifTime(std::string_view text) {
  constexpr std::string_view kForm = "9999:99:99 99:99:99";
  if (text.size() != kForm.size()) return {};
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool fits = kForm[i] == '9'   ? isDigit(text[i])
                      : i < 10          ? text[i] == ':' || text[i] == '-'
                      : kForm[i] == ' ' ? text[i] == ' ' || text[i] == 'T'
                                        : text[i] == ':';
    if (!fits) return {};
  }
  std::string time(text);
  time[4] = time[7] = ':';
  time[10] = ' ';
  return time;
}

const TextHome* homeOf(const CarriedText& text) {
  // A text in one of several languages is not the text for everybody.
  if (text.text.empty() || !text.language.empty() || text.text.find('\0') != std::string::npos)
    return nullptr;
  const auto home = std::find_if(kTextHomes.begin(), kTextHomes.end(),
                                 [&](const TextHome& row) { return row.keyword == text.keyword; });
  return home == kTextHomes.end() ? nullptr : &*home;
}

/// Empty when the key cannot say it.
std::string valueOf(const CarriedText& text, const TextHome& home) {
  return home.keyword == kCreationTime ? exifTime(text.text) : text.text;
}

Dictionary* groupIn(Dictionary& tree, std::string_view key) {
  const auto found = tree.find(key);
  return found == tree.end() ? nullptr : found->second.get<Dictionary>();
}

}  // namespace

void giveTextsAHome(const std::vector<CarriedText>& texts, Dictionary& tree) {
  for (const CarriedText& text : texts) {
    const TextHome* home = homeOf(text);
    if (home == nullptr) continue;
    const std::string value = valueOf(text, *home);
    if (value.empty()) continue;
    tree.emplace(home->group, Dictionary());
    if (auto* group = groupIn(tree, home->group)) group->emplace(home->key, value);
  }
}

bool isAtHome(const CarriedText& text, const Dictionary& tree) {
  const TextHome* home = homeOf(text);
  if (home == nullptr) return false;
  const Dictionary& group = groupOf(tree, home->group);
  const auto found = group.find(home->key);
  return found != group.end() && found->second == Value(valueOf(text, *home));
}

Dictionary withoutTexts(Dictionary tree, const std::vector<CarriedText>& texts, const Dictionary& told) {
  for (const CarriedText& text : texts) {
    const TextHome* home = isAtHome(text, tree) ? homeOf(text) : nullptr;
    Dictionary* group = home != nullptr ? groupIn(tree, home->group) : nullptr;
    if (group != nullptr && !groupOf(told, home->group).contains(home->key))
      group->erase(std::string(home->key));
  }
  return tree;
}

bool hasHomeIn(const CarriedText& text, std::string_view group) {
  const TextHome* home = homeOf(text);
  return home != nullptr && home->group == group;
}

}  // namespace ostra
