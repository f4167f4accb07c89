#include "platform/imageio/metadata/xmp_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "platform/imageio/metadata/rational.h"
#include "platform/imageio/metadata/text_encoding.h"

namespace ostra {

namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlank);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlank) - begin + 1);
}

template <class Number>
std::optional<Number> wholly(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// "28/10", or a plain number.
std::optional<double> fraction(std::string_view text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) {
    const auto number = wholly<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
  }
  const auto above = wholly<std::int64_t>(text.substr(0, slash)),
             below = wholly<std::int64_t>(text.substr(slash + 1));
  if (!above || !below || *below == 0) return std::nullopt;
  return static_cast<double>(*above) / static_cast<double>(*below);
}

std::optional<Value> fractions(std::string_view text) {
  Array numbers;
  while (!(text = trimmed(text)).empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    const auto number = fraction(word);
    if (!number) return std::nullopt;
    numbers.emplace_back(*number);
    text.remove_prefix(word.size());
  }
  if (numbers.empty()) return std::nullopt;
  return Value(std::move(numbers));
}

/// Whether `text` has digits where the pattern has 9 and else the pattern's own characters.
bool looksLike(std::string_view text, std::string_view pattern) {
  if (text.size() < pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (pattern[i] == '9' ? !digit : text[i] != pattern[i]) return false;
  }
  return true;
}

std::string digitsOf(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (c >= '0' && c <= '9') digits += c;
  }
  return digits;
}

constexpr std::string_view kDay = "9999-99-99", kClock = "T99:99:99";

/// These give nothing for a date that is not complete: the tree's forms have no place for a part of one.
std::string moment(std::string_view text) {
  if (!looksLike(text, kDay) || !looksLike(text.substr(kDay.size()), kClock)) return {};
  std::string result(text.substr(0, kDay.size() + kClock.size()));
  result[4] = result[7] = ':';
  result[10] = ' ';
  return result;
}

std::string day(std::string_view text) {
  return looksLike(text, kDay) ? digitsOf(text.substr(0, kDay.size())) : std::string();
}

std::string clockTime(std::string_view text) {
  if (!looksLike(text, kDay) || !looksLike(text.substr(kDay.size()), kClock)) return {};
  const std::string_view time = text.substr(kDay.size());
  std::string digits = digitsOf(time.substr(0, kClock.size()));
  if (time.ends_with('Z')) return digits + "+0000";
  const std::size_t zone = time.find_first_of("+-");
  if (zone == std::string_view::npos) return digits;
  const std::string_view hours = time.substr(zone + 1);
  return looksLike(hours, "99:99") ? digits + time[zone] + digitsOf(hours) : std::string();
}

std::string joinedItems(const std::vector<std::string>& items) {
  std::string joined;
  for (const std::string& item : items) joined += (joined.empty() ? "" : "; ") + item;
  return joined;
}

std::optional<Value> contact(const XmpPacket& packet, const XmpProperty& property) {
  Dictionary fields;
  for (const auto& [name, text] : packet.fields(property)) {
    if (!text.empty()) fields.emplace(name, text);
  }
  if (fields.empty()) return std::nullopt;
  return Value(std::move(fields));
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else if (c == '>') {
      result += "&gt;";
    } else if (static_cast<unsigned char>(c) >= ' ' || c == '\n' || c == '\t') {
      result += c;  // XML has no place for the others
    }
  }
  return result;
}

std::string element(std::string_view name, std::string_view content, std::string_view attributes = {}) {
  return "<" + std::string(name) + std::string(attributes) + ">" + std::string(content) + "</" +
         std::string(name) + ">";
}

std::string fractionText(double value) {
  const auto rational = rationalFrom(value, INT32_MAX);
  if (!rational) return {};
  return std::to_string(rational->numerator) + "/" + std::to_string(rational->denominator);
}

std::string textOf(const Value& value) {
  if (const auto* text = value.get<std::string>()) return isUtf8(*text) ? escaped(*text) : std::string();
  if (const auto* number = value.get<std::int64_t>()) return std::to_string(*number);
  return {};
}

std::string fractionsText(const Value& value) {
  const auto* array = value.get<Array>();
  std::string text;
  if (array == nullptr) return text;
  for (const Value& item : *array) {
    const std::string part = item.number() ? fractionText(*item.number()) : std::string();
    if (part.empty()) return {};
    text += (text.empty() ? "" : " ") + part;
  }
  return text;
}

std::string bagOf(const Value& value) {
  std::string items;
  const auto add = [&](const Value& item) {
    if (const std::string text = textOf(item); !text.empty()) items += element("rdf:li", text);
  };
  if (const auto* array = value.get<Array>()) {
    std::for_each(array->begin(), array->end(), add);
  } else {
    add(value);
  }
  return items.empty() ? items : element("rdf:Bag", items);
}

std::string structureOf(const Value& value, std::string_view prefix) {
  const auto* fields = value.get<Dictionary>();
  std::string content;
  if (fields == nullptr) return content;
  for (const auto& [name, item] : *fields) {
    const bool isName =
        name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz") == std::string::npos;
    const std::string text = textOf(item);
    if (isName && !name.empty() && !text.empty()) content += element(std::string(prefix) + ":" + name, text);
  }
  return content;
}

std::string textInForm(const std::vector<std::string>& items, std::string_view first, XmpForm form) {
  if (form == XmpForm::list) return joinedItems(items);
  if (form == XmpForm::moment) return moment(first);
  if (form == XmpForm::day) return day(first);
  if (form == XmpForm::clock) return clockTime(first);
  return items[0];
}

}  // namespace

std::optional<Value> readXmpValue(const XmpPacket& packet, const XmpProperty& property, XmpForm form) {
  if (form == XmpForm::contact) return contact(packet, property);
  std::vector<std::string> items = packet.items(property);
  std::erase_if(items, [](const std::string& item) { return trimmed(item).empty(); });
  if (items.empty()) return std::nullopt;
  const std::string_view first = trimmed(items[0]);
  std::optional<Value> value;
  if (form == XmpForm::texts) {
    value.emplace(Array(items.begin(), items.end()));
  } else if (form == XmpForm::integer) {
    if (const auto number = wholly<std::int64_t>(first)) value.emplace(*number);
  } else if (form == XmpForm::real) {
    if (const auto number = fraction(first)) value.emplace(*number);
  } else if (form == XmpForm::reals) {
    value = fractions(first);
  } else if (std::string words = textInForm(items, first, form); !words.empty()) {
    value.emplace(std::move(words));
  }
  return value;
}

std::string xmpElement(const XmpKey& key, const Value& value) {
  const std::string_view prefix = xmpPrefix(key.space);
  const std::string name = std::string(prefix) + ":" + std::string(key.name);
  std::string content, attributes;
  if (key.form == XmpForm::texts) content = bagOf(value);
  if (key.form == XmpForm::text || key.form == XmpForm::integer) content = textOf(value);
  if (key.form == XmpForm::real && value.number()) content = fractionText(*value.number());
  if (key.form == XmpForm::reals) content = fractionsText(value);
  if (key.form == XmpForm::contact) {
    content = structureOf(value, prefix);
    attributes = " rdf:parseType=\"Resource\"";
  }
  if (content.empty()) return content;
  if (key.space == xmp_space::kRights)
    content = element("rdf:Alt", element("rdf:li", content, " xml:lang=\"x-default\""));
  return element(name, content, attributes);
}

}  // namespace ostra
