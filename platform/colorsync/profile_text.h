#pragma once
#include <string>
#include <vector>

#include "platform/foundation/bytes.h"
#include "platform/foundation/user_languages.h"

namespace ostra {

/// The text of a tag (its type first), in UTF-8 up to the first NUL: of a multi-language text the record of
/// the first of the languages that it has, else the American English one, any English one, the first; of a
/// text description its Unicode part, else the ASCII one. Empty when it is of another type or cannot be read.
std::string profileText(ByteView tag, const std::vector<Language>& languages);

}  // namespace ostra
