#pragma once
#include "platform/foundation/file_coordinator.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// A coordinator's service that runs the accessor with the URL it was asked for, or fails before or after
/// that.
class RecordingFileCoordination : public FileCoordination {
 public:
  explicit RecordingFileCoordination(CallLog& log) : log_(log) {}

  std::optional<NSError> coordinateWriting(const NSFilePresenter* presenter, const URL& url,
                                           NSFileCoordinatorWritingOptions options,
                                           const NSFileCoordinator::Accessor& accessor) override {
    log_.add("coordinate " + url.path() + " option " + std::to_string(static_cast<unsigned>(options)) +
             belonging(presenter));
    if (presenter != nullptr) primary = presenter->primaryPresentedItemURL();
    if (errorBefore) return errorBefore;
    accessor(target.value_or(url));
    log_.add("coordinated");
    return errorAfter;
  }

  /// Answered without running the accessor.
  std::optional<NSError> errorBefore;
  /// Answered although the accessor has run.
  std::optional<NSError> errorAfter;
  /// Where the accessor is sent, if not to the URL asked for.
  std::optional<URL> target;
  /// The primary item of the last presenter.
  std::optional<URL> primary;

 private:
  static std::string belonging(const NSFilePresenter* presenter) {
    if (presenter == nullptr) return "";
    return " presented as " + presenter->presentedItemURL()->path() + " of " +
           presenter->primaryPresentedItemURL()->path();
  }

  CallLog& log_;
};

}  // namespace ostra::test
