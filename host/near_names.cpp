#include "host/near_names.h"

#include <algorithm>
#include <numeric>
#include <optional>

#include "platform/foundation/text_comparison.h"
#include "platform/foundation/unicode.h"

namespace ostra {
namespace {

/// A name on the command line can be as long as it likes, and the distance costs the product of two lengths.
constexpr std::size_t kLongest = 200;

/// Letters to put in, take out or change to make one of the other.
std::size_t editDistance(const std::u32string& a, const std::u32string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t change = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({change, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

/// Nothing when the two are not near.
std::optional<std::size_t> distance(const std::u32string& typed, const std::u32string& name) {
  const bool held = name.find(typed) != typed.npos || (name.size() > 2 && typed.find(name) != typed.npos);
  if (held) return 0;
  if (name.size() > kLongest) return std::nullopt;
  const std::size_t edits = editDistance(typed, name);
  return edits <= std::max<std::size_t>(2, typed.size() / 3) ? std::optional(edits) : std::nullopt;
}

}  // namespace

std::vector<std::string> nearNames(const std::string& typed, const std::vector<std::string>& names,
                                   std::size_t most) {
  const std::u32string wanted = charactersOf(lowercased(typed));
  if (wanted.empty() || wanted.size() > kLongest) return {};
  std::vector<std::pair<std::size_t, std::string>> near;
  for (const std::string& name : names) {
    if (const auto edits = distance(wanted, charactersOf(lowercased(name)))) near.emplace_back(*edits, name);
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& one, const auto& other) { return one.first < other.first; });
  near.resize(std::min(near.size(), most));
  std::vector<std::string> result;
  result.reserve(near.size());
  for (auto& [edits, name] : near) result.push_back(std::move(name));
  return result;
}

}  // namespace ostra
