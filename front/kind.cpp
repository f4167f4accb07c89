#include "front/kind.h"

#include <algorithm>

#include "platform/foundation/bundle.h"
#include "platform/foundation/characters.h"

namespace ostra {
namespace {

using Kind = OstraQuickActionKind;

enum class Result { jpeg, ownFormat };

struct Row {
  Kind kind;
  std::string_view rawValue;
  std::string_view fallbackTitle;
  Result result;
};

constexpr std::array<Row, 7> table{{
    {Kind::convertColorProfile, "convert-color-profile", "Convert Color Profile", Result::ownFormat},
    {Kind::grayscale, "grayscale", "Convert to Grayscale", Result::ownFormat},
    {Kind::grayscaleJPEG, "grayscale-jpg", "Convert to Grayscale .JPG", Result::jpeg},
    {Kind::jpeg, "jpg", "Convert to JPG", Result::jpeg},
    {Kind::sRGB, "srgb", "Convert to sRGB", Result::ownFormat},
    {Kind::sRGBJPEG, "srgb-jpg", "Convert to sRGB .JPG", Result::jpeg},
    {Kind::invert, "invert", "Invert Color", Result::ownFormat},
}};

const Row& row(Kind kind) { return table.at(static_cast<std::size_t>(kind)); }

std::optional<std::string> bundleText(std::string_view key) {
  const std::optional<Value> value = NSBundle::mainBundle().objectForInfoDictionaryKey(key);
  const std::string* text = value ? value->get<std::string>() : nullptr;
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

}  // namespace

const std::array<Kind, 7>& allCases() {
  static constexpr std::array<Kind, 7> cases = [] {
    std::array<Kind, 7> kinds{};
    std::transform(table.begin(), table.end(), kinds.begin(), [](const Row& row) { return row.kind; });
    return kinds;
  }();
  return cases;
}

std::string_view rawValue(Kind kind) { return row(kind).rawValue; }

std::optional<Kind> kindWithRawValue(std::string_view rawValue) {
  const auto* found =
      std::find_if(table.begin(), table.end(), [&](const Row& row) { return row.rawValue == rawValue; });
  return found != table.end() ? std::optional(found->kind) : std::nullopt;
}

bool isJPEGKind(Kind kind) { return row(kind).result == Result::jpeg; }

bool isFormatKeepingKind(Kind kind) { return row(kind).result == Result::ownFormat; }

std::optional<Kind> configuredKind() {
  const std::optional<std::string> text = bundleText("NIVEQuickAction");
  return text ? kindWithRawValue(trimWhitespaceAndNewlines(*text)) : std::nullopt;
}

std::string_view fallbackTitle(Kind kind) { return row(kind).fallbackTitle; }

std::string displayTitle(Kind kind) {
  // Not trimmed: whoever names a bundle with blanks gets blanks.
  std::optional<std::string> name = bundleText("CFBundleDisplayName");
  return name && !name->empty() ? *std::move(name) : std::string(fallbackTitle(kind));
}

}  // namespace ostra
