#pragma once
#include <map>
#include <optional>
#include <set>
#include <string>

namespace ostra {

/// What was written into a user's home, so that all of that, and nothing else, can be taken away again.
struct IntegrationRecord {
  /// Fingerprints of what each file may hold, by path: two while it is being rewritten.
  std::map<std::string, std::set<std::string>> files;
  /// Folders that did not exist before.
  std::set<std::string> folders;
  /// The fingerprint of Thunar's list without our actions, where we made the file.
  std::optional<std::string> madeList;

  bool isEmpty() const { return files.empty() && folders.empty() && !madeList; }
  bool operator==(const IntegrationRecord&) const = default;
};

/// Tells texts apart that nobody made to be mistaken for one another.
std::string fingerprintOf(const std::string& text);

/// An empty record where there is no file. Throws `UsageError` when it cannot be read.
IntegrationRecord readRecord(const std::string& path);
/// Throws `NSError`.
void writeRecord(const IntegrationRecord& record, const std::string& path);

}  // namespace ostra
