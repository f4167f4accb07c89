#include "host/integration/home_files.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include <unistd.h>

#include "host/message.h"
#include "host/usage_error.h"
#include "platform/foundation/data.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

namespace fs = std::filesystem;

constexpr const char* kUnchanged = " Nothing was changed.";
constexpr fs::perms kRunnable = fs::perms::owner_exec;

/// Of no type where the system does not say.
fs::file_status statusOf(const std::string& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored);
}

bool isMissing(const std::string& path) { return statusOf(path).type() == fs::file_type::not_found; }

std::string folderOf(const std::string& path) { return fs::path(path).parent_path().string(); }

void makeFolderFor(const std::string& path) {
  if (!makeFolders(folderOf(path))) throw fileError(errno, FileAccess::write, folderOf(path));
}

/// Whoever may read it may run it.
void makeExecutable(const std::string& path) {
  std::error_code failure;
  const auto mode = static_cast<unsigned>(fs::status(path, failure).permissions());
  if (!failure) fs::permissions(path, static_cast<fs::perms>(mode | (mode & 0444U) >> 2), failure);
  if (failure) throw fileError(failure.value(), FileAccess::write, path);
}

}  // namespace

std::string readText(const std::string& path) {
  const Bytes bytes = readSmallFile(URL::fileURLWithPath(path));
  return {bytes.begin(), bytes.end()};
}

HomeFiles::HomeFiles(std::string recordFile, bool isRehearsal)
    : recordFile_(std::move(recordFile)),
      isRehearsal_(isRehearsal),
      record_(readRecord(recordFile_)),
      saved_(record_) {}

void HomeFiles::tellWritten(const std::string& path) {
  report_ += (isRehearsal_ ? "would write " : "wrote ") + path + "\n";
}

void HomeFiles::tellRemoved(const std::string& path) {
  removed_.insert(path);
  report_ += (isRehearsal_ ? "would remove " : "removed ") + path + "\n";
}

void HomeFiles::tellFailure(std::string_view sentence) {
  say(sentence);
  hasFailed_ = true;
}

bool HomeFiles::isOurs(const std::string& path) const {
  const auto known = record_.files.find(path);
  if (known == record_.files.end() || !fs::is_regular_file(statusOf(path))) return false;
  try {
    return known->second.contains(fingerprintOf(readText(path)));
  } catch (const NSError&) {
    return false;
  }
}

HomeFiles::State HomeFiles::stateOf(const MenuFile& file) const {
  const fs::file_status status = statusOf(file.name);
  if (status.type() == fs::file_type::none) return State::unknown;
  if (status.type() == fs::file_type::not_found) return State::missing;
  if (status.type() != fs::file_type::regular) return State::notOurs;
  try {
    const bool isRunnable = (status.permissions() & kRunnable) != fs::perms::none;
    if (readText(file.name) == file.text && (isRunnable || !file.isExecutable)) return State::asWanted;
  } catch (const NSError&) {
    return State::unknown;
  }
  return isOurs(file.name) ? State::ours : State::notOurs;
}

void HomeFiles::rememberMissingFolders(const std::string& path) {
  for (std::string folder = folderOf(path);; folder = folderOf(folder)) {
    const fs::file_type type = statusOf(folder).type();
    if (type == fs::file_type::none) throw UsageError("“" + folder + "” cannot be looked at." + kUnchanged);
    if (type != fs::file_type::not_found) return;
    record_.folders.insert(folder);
  }
}

// Before anything is written, so that a run that is cut short can be undone.
void HomeFiles::announce(const std::vector<MenuFile>& files, const std::vector<std::string>& more) {
  bool writes = !more.empty();
  for (const MenuFile& file : files) {
    const State state = stateOf(file);
    states_[file.name] = state;
    if (state == State::notOurs || state == State::unknown) continue;
    record_.files[file.name].insert(fingerprintOf(file.text));
    rememberMissingFolders(file.name);
    writes = writes || state != State::asWanted;
  }
  for (const std::string& path : more) rememberMissingFolders(path);
  if (!writes) return;
  rememberMissingFolders(recordFile_);
  saveRecord();
  if (!hasFailed_) return;
  removeOwnFolder();
  throw UsageError(std::string("What is written cannot be recorded.") + kUnchanged);
}

void HomeFiles::write(const MenuFile& file) {
  switch (states_.at(file.name)) {
    case State::asWanted:
      record_.files[file.name] = {fingerprintOf(file.text)};
      return;
    case State::notOurs:
      return say("“" + file.name + "” is not as we wrote it, and stays as it is.");
    case State::unknown:
      return tellFailure(fileError(EIO, FileAccess::read, file.name).localizedDescription());
    case State::missing:
    case State::ours:
      break;
  }
  try {
    if (!isRehearsal_) {
      makeFolderFor(file.name);
      writeToURL({reinterpret_cast<const std::uint8_t*>(file.text.data()), file.text.size()},
                 URL::fileURLWithPath(file.name), NSDataWritingOptions::atomic);
      if (file.isExecutable) makeExecutable(file.name);
    }
    record_.files[file.name] = {fingerprintOf(file.text)};
    tellWritten(file.name);
  } catch (const NSError& failure) {
    tellFailure(failure.localizedDescription());
  }
}

void HomeFiles::remove(const std::string& path) {
  const bool isThere = !isMissing(path);
  if (isThere && !isOurs(path)) {
    say("“" + path + "” is not as we wrote it, and stays as it is.");
  } else if (isThere) {
    std::error_code failure;
    if (!isRehearsal_) fs::remove(path, failure);
    if (failure)
      return tellFailure(fileError(failure.value(), FileAccess::write, path).localizedDescription());
    tellRemoved(path);
  }
  record_.files.erase(path);
}

void HomeFiles::bring(const std::vector<MenuFile>& files, const std::vector<std::string>& more) {
  announce(files, more);
  std::set<std::string> wanted;
  for (const MenuFile& file : files) {
    // Two file managers can share a folder.
    if (wanted.insert(file.name).second) write(file);
  }
  const std::map<std::string, std::set<std::string>> known = record_.files;
  for (const auto& [path, fingerprints] : known) {
    if (!wanted.contains(path)) remove(path);
  }
}

void HomeFiles::removeEmptyFolders() {
  // What lies deeper has the longer path.
  std::vector<std::string> folders(record_.folders.begin(), record_.folders.end());
  std::stable_sort(folders.begin(), folders.end(),
                   [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
  const bool isOver = record_.files.empty() && !record_.madeList;
  for (const std::string& folder : folders) {
    std::error_code failure;
    bool isEmpty = true;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure)) {
      isEmpty = isEmpty && removed_.contains(entry.path().string());
    }
    if (!failure && isEmpty) {
      if (isRehearsal_ || rmdir(folder.c_str()) == 0) tellRemoved(folder);
    }
    const bool isGone = isMissing(folder);
    if (isGone || isOver) record_.folders.erase(folder);
  }
}

void HomeFiles::saveRecord() {
  if (isRehearsal_ || record_ == saved_) return;
  try {
    makeFolderFor(recordFile_);
    writeRecord(record_, recordFile_);
    saved_ = record_;
  } catch (const NSError& failure) {
    tellFailure(failure.localizedDescription());
  }
}

// The folder is ours by its name: no record says so of a run that ended before it had one.
void HomeFiles::removeOwnFolder() const {
  if (!isRehearsal_) rmdir(folderOf(recordFile_).c_str());
}

void HomeFiles::finish() {
  if (record_.files.empty() && !record_.madeList && !isMissing(recordFile_)) {
    std::error_code failure;
    if (!isRehearsal_) fs::remove(recordFile_, failure);
    if (!failure) removed_.insert(recordFile_);
    if (failure) {
      tellFailure(fileError(failure.value(), FileAccess::write, recordFile_).localizedDescription());
    }
  }
  removeEmptyFolders();
  if (record_.isEmpty()) return removeOwnFolder();
  saveRecord();
}

}  // namespace ostra
