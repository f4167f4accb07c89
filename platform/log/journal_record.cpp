#include <algorithm>
#include <cstdint>

#include "platform/log/journal.h"

namespace ostra {
namespace {

// The journal's rule: capitals, digits and underscores, not beginning with a digit or (its own fields) an
// underscore, at most 64 characters. It drops others without a word.
bool isFieldName(const std::string& name) {
  const auto allowed = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; };
  return !name.empty() && name.size() <= 64 && name[0] >= 'A' && name[0] <= 'Z' &&
         std::all_of(name.begin(), name.end(), allowed);
}

void append(std::string& record, const std::string& name, const std::string& value) {
  if (!isFieldName(name)) return;
  record += name;
  if (value.find('\n') == std::string::npos) {
    record += '=';
  } else {
    record += '\n';
    for (int shift = 0; shift < 64; shift += 8) {
      record += static_cast<char>(static_cast<std::uint64_t>(value.size()) >> shift & 0xFF);
    }
  }
  record += value;
  record += '\n';
}

}  // namespace

std::string journalRecord(const std::string& subsystem, const std::string& category, LogLevel level,
                          const LogMessage& message) {
  std::string record;
  append(record, "MESSAGE", message.text);
  append(record, "PRIORITY", level == LogLevel::error ? "3" : "6");
  append(record, "SYSLOG_IDENTIFIER", "ostra");
  append(record, "OSTRA_SUBSYSTEM", subsystem);
  append(record, "OSTRA_CATEGORY", category);
  for (const auto& [name, value] : message.fields) append(record, name, value);
  return record;
}

}  // namespace ostra
