#pragma once
#include <stdexcept>
#include <string>
#include <vector>

namespace ostra {

/// A list of custom actions that is none, or that cannot be edited without losing something. The text tells
/// why, as the end of a sentence.
class CustomActionsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Thunar's list of custom actions, an XML text, with these actions in place of our former ones, else behind
/// all others. What is not ours stays as it is, byte for byte. Ours are known by their unique identifiers.
std::string withCustomActions(const std::string& list, const std::vector<std::string>& actions);

/// The list without ours: for a list that nobody else changed, the one that there was before.
std::string withoutCustomActions(const std::string& list);

}  // namespace ostra
