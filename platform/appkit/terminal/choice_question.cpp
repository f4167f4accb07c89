#include "platform/appkit/terminal/choice_question.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>

#include "platform/foundation/text_comparison.h"

namespace ostra {
namespace {

std::vector<std::size_t> choosable(const std::vector<NSMenuItem>& items) {
  std::vector<std::size_t> positions;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!items[i].isSeparator) positions.push_back(i);
  }
  return positions;
}

std::string numberedLine(std::size_t number, std::size_t width, const std::string& title) {
  const std::string digits = std::to_string(number);
  return std::string(width - digits.size(), ' ') + digits + "  " + title + "\n";
}

std::optional<std::size_t> numberIn(std::string_view answer) {
  std::size_t number = 0;
  const auto [end, failure] = std::from_chars(answer.data(), answer.data() + answer.size(), number);
  const bool whole = failure == std::errc() && end == answer.data() + answer.size();
  return whole && !answer.empty() ? std::optional(number) : std::nullopt;
}

/// Looks whether a title is what was typed.
using Fits = std::function<bool(const std::string& title)>;

}  // namespace

std::string numberedList(const std::vector<NSMenuItem>& items) {
  std::vector<std::size_t> all(items.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
  return numberedList(items, all);
}

std::string numberedList(const std::vector<NSMenuItem>& items, const std::vector<std::size_t>& positions) {
  const std::vector<std::size_t> numbered = choosable(items);
  const std::size_t width = std::to_string(numbered.size()).size() + 1;
  std::string list;
  for (const std::size_t position : positions) {
    if (items[position].isSeparator) {
      list += std::string(width + 2, ' ') + "----\n";
      continue;
    }
    const auto found = std::lower_bound(numbered.begin(), numbered.end(), position);
    list +=
        numberedLine(static_cast<std::size_t>(found - numbered.begin()) + 1, width, items[position].title);
  }
  return list;
}

Meant meantBy(std::string_view answer, const std::vector<NSMenuItem>& items) {
  const std::vector<std::size_t> positions = choosable(items);
  const auto number = numberIn(answer);
  if (number && *number >= 1 && *number <= positions.size()) return {{positions[*number - 1]}, true};
  const std::string lower = lowercased(answer);
  const Fits ways[] = {
      [&](const std::string& title) { return title == answer; },
      [&](const std::string& title) { return lowercased(title) == lower; },
      [&](const std::string& title) { return lowercased(title).starts_with(lower); },
      [&](const std::string& title) { return lowercased(title).find(lower) != std::string::npos; },
  };
  for (const Fits& fits : ways) {
    Meant meant;
    std::copy_if(positions.begin(), positions.end(), std::back_inserter(meant.positions),
                 [&](std::size_t position) { return fits(items[position].title); });
    meant.certain = meant.positions.size() == 1 && &fits != &ways[3];
    if (!meant.positions.empty()) return meant;
  }
  return {};
}

}  // namespace ostra
