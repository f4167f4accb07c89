#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace ostra {

/// The bytes of a path as they stand in the text of a URL (RFC 3986, `path`): everything but letters, digits
/// and the marks that a path may hold as they are becomes %XX.
std::string percentEncodedPath(std::string_view path);

/// The bytes behind the text; nothing when a per cent sign is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);

/// The parts of the text of an absolute URL.
struct URLParts {
  std::string scheme;  // in lower case
  std::string authority;
  std::string path;  // still encoded; query and fragment are cut off
};

/// Nothing when the text has no scheme.
std::optional<URLParts> splitAbsoluteURL(std::string_view text);

}  // namespace ostra
