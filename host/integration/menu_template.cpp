#include "host/integration/menu_template.h"

#include <set>
#include <sstream>

#include "host/usage_error.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"

namespace ostra {
namespace {

constexpr std::string_view kLanguage = "LANGUAGE";

/// A line, taken apart at its names: every second part is one.
std::vector<std::string> partsOf(const std::string& line) {
  std::vector<std::string> parts(1);
  for (const char character : line) {
    if (character == '@') {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  if (parts.size() % 2 == 0) throw UsageError("A template's line ends within a name: “" + line + "”.");
  return parts;
}

const MenuText& valueOf(const std::string& name, const TemplateValues& values) {
  const auto found = values.texts.find(name);
  if (found == values.texts.end()) throw UsageError("A template says “" + name + "”, which is nothing.");
  return found->second;
}

std::set<std::string> languagesOf(const std::vector<std::string>& parts, const TemplateValues& values) {
  std::set<std::string> languages;
  for (std::size_t i = 1; i < parts.size(); i += 2) {
    if (parts[i] == kLanguage || parts[i].empty()) continue;
    for (const auto& translation : valueOf(parts[i], values).translations)
      languages.insert(translation.first);
  }
  return languages;
}

/// In English where the language is empty, or does not have it.
std::string textIn(const std::string& language, const MenuText& text) {
  const auto found = text.translations.find(language);
  return found == text.translations.end() ? text.plain : found->second;
}

std::string joined(const std::vector<std::string>& parts, const TemplateValues& values,
                   const std::string& language) {
  std::string line;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i % 2 == 0) {
      line += parts[i];
    } else if (parts[i].empty()) {
      line += '@';
    } else {
      line += parts[i] == kLanguage ? language : textIn(language, valueOf(parts[i], values));
    }
  }
  return line + "\n";
}

std::string filledLine(const std::string& line, const TemplateValues& values) {
  const std::vector<std::string> parts = partsOf(line);
  bool repeated = false;
  for (std::size_t i = 1; i < parts.size(); i += 2) repeated = repeated || parts[i] == kLanguage;
  if (!repeated) return joined(parts, values, "");
  std::string lines;
  for (const std::string& language : languagesOf(parts, values)) lines += joined(parts, values, language);
  return lines;
}

/// The lines up to the end of a repetition, which is taken too.
std::string repeatedLines(std::istream& lines) {
  std::string repeated;
  for (std::string line; std::getline(lines, line);) {
    if (line == "@end@") return repeated;
    repeated += line + "\n";
  }
  throw UsageError("A template repeats lines for every entry, without an end.");
}

}  // namespace

std::string fillTemplate(std::string_view text, const TemplateValues& values) {
  std::istringstream lines{std::string(text)};
  std::string filled;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("@#")) continue;
    if (line == "@entries@") {
      const std::string repeated = repeatedLines(lines);
      for (const TemplateValues& entry : values.entries) filled += fillTemplate(repeated, entry);
    } else {
      filled += filledLine(line, values);
    }
  }
  return filled;
}

std::string fillTemplateFile(const std::string& folder, const std::string& name,
                             const TemplateValues& values) {
  try {
    const Bytes text = readSmallFile(URL::fileURLWithPath(folder + "/" + name));
    return fillTemplate({reinterpret_cast<const char*>(text.data()), text.size()}, values);
  } catch (const NSError& failure) {
    throw UsageError("The template “" + name + "” cannot be used. " + failure.localizedDescription());
  }
}

}  // namespace ostra
