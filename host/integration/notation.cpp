#include "host/integration/notation.h"

namespace ostra {
namespace {

bool isPlain(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') ||
         std::string_view("/._-+:,@").find(character) != std::string_view::npos;
}

bool isPlainWord(std::string_view word) {
  for (const char character : word) {
    if (!isPlain(character)) return false;
  }
  return !word.empty();
}

std::string withDoubledPercents(std::string_view text) {
  std::string doubled;
  for (const char character : text) doubled.append(character == '%' ? 2 : 1, character);
  return doubled;
}

std::string keyFileText(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    if (character == '\\') {
      escaped += "\\\\";
    } else if (character == '\n') {
      escaped += "\\n";
    } else if (character == '\r') {
      escaped += "\\r";
    } else if (character == '\t') {
      escaped += "\\t";
    } else if (character == ' ' && escaped.empty()) {
      escaped += "\\s";
    } else {
      escaped += character;
    }
  }
  return escaped;
}

std::string desktopEntryWord(std::string_view word) {
  if (isPlainWord(word)) return std::string(word);
  std::string quoted = "\"";
  for (const char character : withDoubledPercents(word)) {
    if (std::string_view("\"`$\\").find(character) != std::string_view::npos) quoted += '\\';
    quoted += character;
  }
  return keyFileText(quoted + "\"");
}

std::string shellWord(std::string_view word) {
  if (isPlainWord(word)) return std::string(word);
  std::string quoted = "'";
  for (const char character : word) {
    if (character == '\'') {
      quoted += "'\\''";
    } else {
      quoted += character;
    }
  }
  return quoted + "'";
}

std::string xmlText(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    if (character == '&') {
      escaped += "&amp;";
    } else if (character == '<') {
      escaped += "&lt;";
    } else if (character == '>') {
      escaped += "&gt;";
    } else {
      escaped += character;
    }
  }
  return escaped;
}

std::string upperCased(std::string text) {
  for (char& character : text) {
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  }
  return text;
}

MenuText written(const MenuText& text, const Notation& notation) {
  MenuText result{notation.text(text.plain), {}};
  for (const auto& [language, translated] : text.translations) {
    result.translations.emplace(language, notation.text(translated));
  }
  return result;
}

std::string commandOf(const Menu& menu, const MenuEntry& entry, const Notation& notation) {
  return notation.word(menu.program) + " --ui=desktop --bundle " + notation.word(entry.bundle);
}

TemplateValues entryValues(TemplateValues values, const Menu& menu, const MenuEntry& entry,
                           const Notation& notation) {
  values.texts["ID"] = {notation.text(entry.identifier), {}};
  values.texts["NAME"] = written(entry.name, notation);
  values.texts["TOOLTIP"] = written(entry.tooltip, notation);
  values.texts["ICON"] = {notation.text(entry.icon), {}};
  values.texts["BUNDLE"] = {notation.text(entry.bundle), {}};
  values.texts["COMMAND"] = {commandOf(menu, entry, notation), {}};
  return values;
}

}  // namespace

const Notation kDesktopEntryNotation{keyFileText, desktopEntryWord};
const Notation kShellKeyFileNotation{keyFileText,
                                     [](std::string_view word) { return keyFileText(shellWord(word)); }};
const Notation kShellXmlNotation{
    xmlText, [](std::string_view word) { return xmlText(withDoubledPercents(shellWord(word))); }};
const Notation kShellNotation{shellWord, shellWord};

TemplateValues menuValues(const Menu& menu, const Notation& notation) {
  std::string mimeTypes, patterns, identifiers;
  for (const std::string& type : menu.mimeTypes) mimeTypes += type + ";";
  for (const std::string& extension : menu.extensions) {
    patterns += "*." + extension + ";*." + upperCased(extension) + ";";
  }
  for (const MenuEntry& entry : menu.entries) identifiers += entry.identifier + ";";
  TemplateValues values;
  values.texts["MENU_NAME"] = written(menu.name, notation);
  values.texts["MENU_ICON"] = {notation.text(menu.icon), {}};
  values.texts["MIME_TYPES"] = {notation.text(mimeTypes), {}};
  values.texts["PATTERNS"] = {notation.text(patterns), {}};
  values.texts["ENTRIES"] = {notation.text(identifiers), {}};
  values.texts["PROGRAM"] = {notation.text(menu.program), {}};
  const TemplateValues common = values;
  for (const MenuEntry& entry : menu.entries) {
    values.entries.push_back(entryValues(common, menu, entry, notation));
  }
  return values;
}

}  // namespace ostra
