#include "host/integration/localized_info.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "host/message.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"
#include "platform/foundation/property_list.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

std::string lineAt(const Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  const auto* text = found == dictionary.end() ? nullptr : found->second.get<std::string>();
  if (text == nullptr) return "";
  std::string line = *text;
  const auto isControl = [](char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
  };
  std::replace_if(line.begin(), line.end(), isControl, ' ');
  return line;
}

/// "de" of "de.lproj" and "pt_BR" of "pt-BR.lproj".
std::string languageOf(const fs::path& folder) {
  std::string language = folder.stem().string();
  std::replace(language.begin(), language.end(), '-', '_');
  return language;
}

Dictionary stringsIn(const fs::path& folder) {
  const URL file = URL::fileURLWithPath((folder / "InfoPlist.strings").string());
  try {
    Value value = readPropertyList(readSmallFile(file, kLargestPropertyList));
    if (auto* strings = value.get<Dictionary>()) return std::move(*strings);
    say("“" + file.path() + "” holds no texts.");
  } catch (const NSError& failure) {
    say("“" + file.path() + "” cannot be used. " + failure.localizedDescription());
  }
  return {};
}

}  // namespace

LocalizedInfo::LocalizedInfo(const std::string& folder, Dictionary info) : plain_(std::move(info)) {
  std::error_code ignored;
  for (fs::directory_iterator entry(folder, ignored); entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (entry->path().extension() != ".lproj") continue;
    translations_.emplace(languageOf(entry->path()), stringsIn(entry->path()));
  }
}

MenuText LocalizedInfo::textAt(std::string_view key) const {
  MenuText text{lineAt(plain_, key), {}};
  for (const auto& [language, strings] : translations_) {
    if (std::string translated = lineAt(strings, key); !translated.empty()) {
      text.translations.emplace(language, std::move(translated));
    }
  }
  return text;
}

}  // namespace ostra
