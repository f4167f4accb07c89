#include "front/error.h"

#include "front/main_thread.h"
#include "platform/appkit/alert.h"
#include "platform/appkit/application.h"

namespace ostra {

struct OstraQuickActionError::Contents {
  std::string fileName;
  std::string reason;
  std::string description;
};

OstraQuickActionError::OstraQuickActionError(std::string fileName, std::string reason) {
  Contents contents{std::move(fileName), std::move(reason), {}};
  contents.description = contents.fileName + ": " + contents.reason;
  contents_ = std::make_shared<const Contents>(std::move(contents));
}

const std::string& OstraQuickActionError::fileName() const { return contents_->fileName; }

const std::string& OstraQuickActionError::reason() const { return contents_->reason; }

std::optional<std::string> OstraQuickActionError::errorDescription() const { return contents_->description; }

const char* OstraQuickActionError::what() const noexcept { return contents_->description.c_str(); }

namespace {

enum class RequestErrorCode : std::int64_t { batchFailed = 1, noConversion = 2, noImage = 3 };

NSError requestError(RequestErrorCode code, std::string description) {
  return NSError(kBundleIdentifier, static_cast<std::int64_t>(code),
                 {{std::string(NSLocalizedDescriptionKey), std::move(description)}});
}

}  // namespace

NSError noConversionError() {
  return requestError(RequestErrorCode::noConversion,
                      "This Quick Action bundle does not say which conversion it is (NIVEQuickAction).");
}

NSError noImageError() { return requestError(RequestErrorCode::noImage, "No image was selected."); }

NSError batchError(const std::vector<std::exception_ptr>& failures) {
  std::string lines;
  for (std::size_t i = 0; i < failures.size(); ++i) {
    if (i > 0) lines += '\n';
    lines += localizedDescription(failures[i]);
  }
  return requestError(RequestErrorCode::batchFailed, std::move(lines));
}

void showFailureAlert(const std::string& title, const std::string& informativeText) {
  runOnMainThread([&] {
    if (NSApplication* application = NSApplication::shared()) application->activateIgnoringOtherApps(true);
    NSAlert alert;
    alert.alertStyle = NSAlertStyle::warning;
    alert.messageText = title;
    alert.informativeText = informativeText;
    alert.addButtonWithTitle("OK");
    alert.runModal();
  });
}

}  // namespace ostra
