#include "platform/imageio/metadata/iptc.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/imageio/metadata/iptc_datasets.h"
#include "platform/imageio/metadata/text_encoding.h"
#include "platform/imageio/property_keys.h"

namespace ostra {

namespace {

constexpr std::uint8_t kEnvelope = 1, kApplication = 2;
constexpr std::uint8_t kCharacterSet = 90, kVersion = 0;
/// ISO 2022's escape to UTF-8.
constexpr std::uint8_t kUtf8Escape[] = {0x1B, '%', 'G'};
constexpr std::uint8_t kVersion4[] = {0, 4};
/// As many values of one key as the tree takes; the records keep the rest.
constexpr std::size_t kMostValues = 4096;

bool isCharacterSet(const IptcDataSet& set) { return set.record == kEnvelope && set.number == kCharacterSet; }

enum class CharacterSet { unstated, utf8, other };

CharacterSet characterSetOf(const std::vector<IptcDataSet>& sets) {
  const auto set = std::find_if(sets.begin(), sets.end(), isCharacterSet);
  if (set == sets.end()) return CharacterSet::unstated;
  const bool utf8 =
      std::equal(set->value.begin(), set->value.end(), std::begin(kUtf8Escape), std::end(kUtf8Escape));
  return utf8 ? CharacterSet::utf8 : CharacterSet::other;
}

/// Unstated text is UTF-8 more often than not; what is not well-formed is the older default.
std::string textOf(const IptcDataSet& set, CharacterSet characters) {
  const std::string_view text = asText(set.value);
  return characters == CharacterSet::other ? utf8FromLatin1(text) : utf8FromUnknown(text);
}

const IptcTag* tagOf(const IptcDataSet& set) {
  return set.record == kApplication ? findIptcTag(set.number) : nullptr;
}

void addValue(Dictionary& group, const IptcTag& tag, std::string text) {
  if (!tag.repeatable) {
    group.emplace(tag.key, std::move(text));
    return;
  }
  auto* values = group.emplace(tag.key, Array()).first->second.get<Array>();
  if (values && values->size() < kMostValues) values->emplace_back(std::move(text));
}

/// What a value says as data sets: its strings, or its one string or number.
std::vector<std::string> textsOf(const Value& value) {
  std::vector<std::string> texts;
  const auto add = [&](const Value& item) {
    if (const auto* text = item.get<std::string>()) texts.push_back(*text);
    if (const auto* number = item.get<std::int64_t>()) texts.push_back(std::to_string(*number));
  };
  if (const auto* array = value.get<Array>()) {
    for (const Value& item : *array) add(item);
  } else {
    add(value);
  }
  return texts;
}

/// The data sets of record 2 whose keys differ, in their new form.
struct Change {
  std::set<std::uint8_t> numbers;
  Bytes added;
  bool plain = true;  // nothing but ASCII
};

Change changeOf(const Dictionary& before, const Dictionary& after) {
  Change change;
  for (const IptcTag& tag : iptcTags()) {
    const auto old = before.find(tag.key), now = after.find(tag.key);
    const bool had = old != before.end(), has = now != after.end();
    if (had == has && (!has || old->second == now->second)) continue;
    change.numbers.insert(tag.number);
    if (!has) continue;
    for (const std::string& text : textsOf(now->second)) {
      change.plain = change.plain && isAscii(text);
      appendDataSet(change.added, kApplication, tag.number, asBytes(text));
    }
  }
  return change;
}

void append(Bytes& bytes, ByteView more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

/// The records with every text that the tree names in UTF-8, saying so.
Bytes utf8Records(ByteView records, const std::vector<IptcDataSet>& sets) {
  const CharacterSet characters = characterSetOf(sets);
  Bytes result;
  std::size_t read = 0;
  appendDataSet(result, kEnvelope, kCharacterSet, kUtf8Escape);
  for (const IptcDataSet& set : sets) {
    read += set.whole.size();
    if (isCharacterSet(set)) continue;
    if (tagOf(set)) {
      appendDataSet(result, set.record, set.number, asBytes(textOf(set, characters)));
    } else {
      append(result, set.whole);
    }
  }
  append(result, records.subspan(read));
  return result;
}

Bytes applied(ByteView records, const std::vector<IptcDataSet>& sets, const Change& change) {
  Bytes result;
  std::size_t read = 0;
  bool added = false;
  const auto addOnce = [&] {
    if (!std::exchange(added, true)) append(result, change.added);
  };
  for (const IptcDataSet& set : sets) {
    read += set.whole.size();
    if (set.record > kApplication) addOnce();
    const bool replaced = set.record == kApplication && change.numbers.contains(set.number);
    if (!replaced) append(result, set.whole);
  }
  addOnce();
  append(result, records.subspan(read));
  return result;
}

Bytes freshRecords(const Change& change) {
  Bytes result;
  if (change.added.empty()) return result;
  appendDataSet(result, kEnvelope, kCharacterSet, kUtf8Escape);
  appendDataSet(result, kApplication, kVersion, kVersion4);
  append(result, change.added);
  return result;
}

}  // namespace

void readIptc(ByteView records, Dictionary& tree) {
  const auto sets = splitIptc(records);
  const CharacterSet characters = characterSetOf(sets);
  Dictionary group;
  for (const IptcDataSet& set : sets) {
    if (const IptcTag* tag = tagOf(set)) addValue(group, *tag, textOf(set, characters));
  }
  if (group.empty()) return;
  auto& place = tree.emplace(kCGImagePropertyIPTCDictionary, Dictionary()).first->second;
  if (auto* known = place.get<Dictionary>()) known->merge(group);
}

Bytes patchIptc(ByteView records, const Dictionary& before, const Dictionary& after) {
  const Change change = changeOf(before, after);
  if (change.numbers.empty()) return Bytes(records.begin(), records.end());
  if (records.empty()) return freshRecords(change);
  const auto sets = splitIptc(records);
  if (change.plain || characterSetOf(sets) == CharacterSet::utf8) return applied(records, sets, change);
  const Bytes utf8 = utf8Records(records, sets);
  return applied(utf8, splitIptc(utf8), change);
}

}  // namespace ostra
