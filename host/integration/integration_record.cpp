#include "host/integration/integration_record.h"

#include <cstdint>
#include <filesystem>

#include <fmt/format.h>

#include "host/usage_error.h"
#include "platform/foundation/data.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"
#include "platform/foundation/property_list.h"

namespace ostra {
namespace {

constexpr std::string_view kFiles = "Files";
constexpr std::string_view kFolders = "Folders";
constexpr std::string_view kMadeList = "MadeList";

/// A property list holds texts only, and a path is bytes: so it stands there as a URL.
std::string writtenPath(const std::string& path) { return URL::fileURLWithPath(path).absoluteString(); }

std::optional<std::string> readPath(const std::string& text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto url = URL::withDataRepresentation({bytes, text.size()});
  if (!url || !url->isFileURL() || !url->path().starts_with('/')) return std::nullopt;
  return url->path();
}

const Value* valueAt(const Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  return found == dictionary.end() ? nullptr : &found->second;
}

std::set<std::string> textsOf(const Value* value) {
  std::set<std::string> texts;
  const auto* array = value != nullptr ? value->get<Array>() : nullptr;
  if (array == nullptr) return texts;
  for (const Value& each : *array) {
    if (const auto* text = each.get<std::string>()) texts.insert(*text);
  }
  return texts;
}

Value arrayOf(const std::set<std::string>& texts) { return Array(texts.begin(), texts.end()); }

IntegrationRecord recordOf(const Dictionary& list) {
  IntegrationRecord record;
  const Value* files = valueAt(list, kFiles);
  if (const auto* byPath = files != nullptr ? files->get<Dictionary>() : nullptr) {
    for (const auto& [path, fingerprints] : *byPath) {
      if (const auto name = readPath(path)) record.files.emplace(*name, textsOf(&fingerprints));
    }
  }
  for (const std::string& path : textsOf(valueAt(list, kFolders))) {
    if (const auto name = readPath(path)) record.folders.insert(*name);
  }
  const Value* made = valueAt(list, kMadeList);
  if (const auto* text = made != nullptr ? made->get<std::string>() : nullptr) record.madeList = *text;
  return record;
}

}  // namespace

std::string fingerprintOf(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char character : text) {
    hash ^= static_cast<unsigned char>(character);
    hash *= 0x100000001B3;
  }
  return fmt::format("{}-{:016x}", text.size(), hash);
}

IntegrationRecord readRecord(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) return {};
  try {
    const Value value = readPropertyList(readSmallFile(URL::fileURLWithPath(path), kLargestPropertyList));
    if (const auto* list = value.get<Dictionary>()) return recordOf(*list);
  } catch (const NSError&) {
    // Said below.
  }
  throw UsageError("“" + path + "”, which says what was written, cannot be read. Nothing was changed.");
}

void writeRecord(const IntegrationRecord& record, const std::string& path) {
  Dictionary files;
  for (const auto& [name, fingerprints] : record.files)
    files.emplace(writtenPath(name), arrayOf(fingerprints));
  std::set<std::string> folders;
  for (const std::string& folder : record.folders) folders.insert(writtenPath(folder));
  Dictionary list{{std::string(kFiles), Value(std::move(files))}, {std::string(kFolders), arrayOf(folders)}};
  if (record.madeList) list.emplace(kMadeList, *record.madeList);
  writeToURL(writePropertyList(list), URL::fileURLWithPath(path), NSDataWritingOptions::atomic);
}

}  // namespace ostra
