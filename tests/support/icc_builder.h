#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/bytes.h"

namespace ostra::test {

/// Profiles whose header and tags a test writes, true or not.
struct IccParts {
  std::string_view space = "RGB ";
  std::string_view profileClass = "mntr";
  /// Signature and bytes, the type first; each begins at a multiple of four.
  std::vector<std::pair<std::string, Bytes>> tags;
};
Bytes iccFile(const IccParts& parts);

/// A multi-language text: language and country as four letters, and the text in UTF-16.
Bytes multiLanguageTag(const std::vector<std::pair<std::string, std::u16string>>& records);
/// A text description of version 2 with an ASCII and, perhaps, a Unicode part.
Bytes descriptionTag(std::string_view ascii, std::u16string_view unicode = {});

/// Puts a number, its highest byte first, into the bytes.
void putNumber(Bytes& bytes, std::size_t offset, std::uint32_t number);

}  // namespace ostra::test
