#pragma once
#include "platform/foundation/file_manager.h"
#include "tests/doubles/call_log.h"
#include "tests/doubles/failing_step.h"

namespace ostra::test {

/// A file manager that touches no disk: its replacement folder is /replacement.
class RecordingFileManager : public NSFileManager {
 public:
  explicit RecordingFileManager(CallLog& log) : log_(log) {}

  URL URLForDirectory(NSSearchPathDirectory directory, NSSearchPathDomainMask domain,
                      const URL& appropriateForURL, bool create) override {
    log_.add("make folder " + std::to_string(static_cast<int>(directory)) + " in domain " +
             std::to_string(static_cast<int>(domain)) + " for " + appropriateForURL.path() +
             (create ? ", creating it" : ""));
    steps.take();
    return URL::fileURLWithPath("/replacement");
  }

  void replaceItemAtURL(const URL& original, const URL& newItem,
                        const std::optional<std::string>& backupItemName,
                        NSFileManagerItemReplacementOptions options) override {
    log_.add("replace " + original.path() + " with " + newItem.path() +
             (backupItemName ? ", with backup" : "") +
             (options != NSFileManagerItemReplacementOptions::none ? ", with options" : ""));
    replacedVersion = original.fileVersion();
    steps.take();
  }

  void removeItemAtURL(const URL& url) override {
    log_.add("remove " + url.path());
    steps.take();
  }

  FailingStep steps;
  /// The version that the last replaced URL carried.
  std::optional<FileVersion> replacedVersion;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
