#pragma once
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/integration/menu.h"

namespace ostra {

/// What the names in a template stand for, written as the template's mechanism writes it.
struct TemplateValues {
  std::map<std::string, MenuText, std::less<>> texts;
  /// For each entry of the menu its own values and the menu's.
  std::vector<TemplateValues> entries;
};

/// Fills a template line by line:
///
///     @NAME@      stands for a text
///     @LANGUAGE@  repeats its line for each language that has one of the line's texts
///     @entries@   on a line of its own repeats the lines up to @end@ for each entry
///     @@          is an at sign
///     @#          begins a line that is left out
///
/// Throws `UsageError` for a name that stands for nothing, or a repetition without an end.
std::string fillTemplate(std::string_view text, const TemplateValues& values);

/// The same for a file in a folder of templates.
std::string fillTemplateFile(const std::string& folder, const std::string& name,
                             const TemplateValues& values);

}  // namespace ostra
