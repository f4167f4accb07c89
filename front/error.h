#pragma once
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/error.h"

namespace ostra {

/// The reverse-DNS name of the extension: the domain of the request errors and the subsystem of the log. A
/// constant; what a bundle's property list says does not change it.
inline constexpr std::string_view kBundleIdentifier = "org.ostra.QuickActions";

/// The failure of one file. Immutable; copies share.
class OstraQuickActionError : public LocalizedError {
 public:
  /// `fileName` is the name that the user knows the file by, `reason` a lower-case sentence ending in a full
  /// stop or the description of a platform error.
  OstraQuickActionError(std::string fileName, std::string reason);

  const std::string& fileName() const;
  const std::string& reason() const;
  /// Always present: the file name, ": " and the reason.
  std::optional<std::string> errorDescription() const override;
  const char* what() const noexcept override;

 private:
  struct Contents;
  std::shared_ptr<const Contents> contents_;
};

/// Code 2: the bundle names no conversion that a request handler can perform.
NSError noConversionError();
/// Code 3: the request holds no item.
NSError noImageError();
/// Code 1: one line per failure, in their order.
NSError batchError(const std::vector<std::exception_ptr>& failures);

/// Shows a warning with an OK button in front of everything else, and returns when the user has dismissed it.
/// From a background thread it waits for the main queue: never call it while the main thread waits for the
/// caller.
void showFailureAlert(const std::string& title, const std::string& informativeText);

}  // namespace ostra
