#pragma once
#include <string>
#include <string_view>

#include "host/integration/menu_template.h"

namespace ostra {

/// How a kind of file writes texts, and words of a command line that are part of a text.
struct Notation {
  std::string (*text)(std::string_view);
  std::string (*word)(std::string_view);
};

/// Key files whose commands follow the rules of desktop entries: words in double quotes, a percent sign
/// twice.
extern const Notation kDesktopEntryNotation;
/// Key files whose commands are quoted as in a shell, and in which nothing stands for a percent sign.
extern const Notation kShellKeyFileNotation;
/// XML in which a command is handed to a shell once the percent signs were looked at.
extern const Notation kShellXmlNotation;
/// Shell scripts.
extern const Notation kShellNotation;

/// The values that templates may name. Of the menu: MENU_NAME, MENU_ICON, MIME_TYPES, PATTERNS (of file
/// names), ENTRIES (identifiers) and PROGRAM; every item of a list ends with a semicolon. Of an entry: ID,
/// NAME, TOOLTIP, ICON, BUNDLE, and COMMAND, to which only the files must be added.
TemplateValues menuValues(const Menu& menu, const Notation& notation);

}  // namespace ostra
