#pragma once
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/integration/integration_record.h"
#include "host/integration/menu_files.h"

namespace ostra {

/// Files in a user's home that are ours, and the record of them. Brings them up to date, or takes them away;
/// a rehearsal only tells what that would do. What somebody else made, or changed, stays as it is. A failure
/// is told on standard error and never stops the rest.
class HomeFiles {
 public:
  /// Throws `UsageError` when the record cannot be read.
  HomeFiles(std::string recordFile, bool isRehearsal);

  /// Writes these files, named by their whole paths, and removes all others that are ours. `more` are files
  /// that the caller is about to make itself. Throws `UsageError`, with nothing changed, when what is about
  /// to be written cannot be recorded.
  void bring(const std::vector<MenuFile>& files, const std::vector<std::string>& more);
  /// Removes the folders that we made and that are empty by now, and saves the record.
  void finish();

  IntegrationRecord& record() { return record_; }
  bool isRehearsal() const { return isRehearsal_; }
  /// Adds to the report that a path was written, or removed; what a rehearsal would do is told as such.
  void tellWritten(const std::string& path);
  void tellRemoved(const std::string& path);
  void tellFailure(std::string_view sentence);

  const std::string& report() const { return report_; }
  bool hasFailed() const { return hasFailed_; }

 private:
  enum class State { missing, asWanted, ours, notOurs, unknown };
  State stateOf(const MenuFile& file) const;
  bool isOurs(const std::string& path) const;
  void announce(const std::vector<MenuFile>& files, const std::vector<std::string>& more);
  void rememberMissingFolders(const std::string& path);
  void write(const MenuFile& file);
  void remove(const std::string& path);
  void removeEmptyFolders();
  void saveRecord();
  void removeOwnFolder() const;

  std::string recordFile_;
  bool isRehearsal_;
  IntegrationRecord record_, saved_;
  /// What was found of the files that are wanted, before anything was changed.
  std::map<std::string, State> states_;
  std::set<std::string> removed_;
  std::string report_;
  bool hasFailed_ = false;
};

/// The text of a small file; links are followed. Throws `NSError`.
std::string readText(const std::string& path);

}  // namespace ostra
