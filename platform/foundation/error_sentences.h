#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostra {

/// What a sentence about a failed file call can name; empty texts are unknown.
struct SentenceNames {
  std::string file;    // the file's name
  std::string folder;  // the name of its folder
  std::string volume;
};

/// The sentence of a code of the Cocoa domain, or nothing for a code without one of its own.
std::optional<std::string> cocoaSentence(std::int64_t code, const SentenceNames& names);

/// "The operation couldn’t be completed." with the reason after it, or with domain and code when there is
/// none.
std::string genericSentence(std::string_view domain, std::int64_t code,
                            const std::optional<std::string>& reason);

}  // namespace ostra
