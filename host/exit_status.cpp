#include "host/exit_status.h"

#include "front/error.h"

namespace ostra {
namespace {

/// The request could not begin: no usable conversion, no file. Code 1 was shown by the alert.
bool isRefusal(const NSError& error) {
  return error.domain() == kBundleIdentifier && (error.code() == 2 || error.code() == 3);
}

bool isUserCancelled(const NSError& error) {
  return error.domain() == NSCocoaErrorDomain && error.code() == NSUserCancelledError;
}

}  // namespace

int exitStatus(const std::optional<RequestEnd>& end, std::optional<int> signal) {
  if (signal) return 128 + *signal;
  if (!end) return kFailedFilesStatus;
  if (!end->error) return kCompletedStatus;
  if (isRefusal(*end->error)) return kUsageStatus;
  return isUserCancelled(*end->error) ? kUserCancelledStatus : kFailedFilesStatus;
}

std::optional<std::string> hostMessage(const RequestEnd& end) {
  if (!end.error || !isRefusal(*end.error)) return std::nullopt;
  return end.error->localizedDescription();
}

}  // namespace ostra
