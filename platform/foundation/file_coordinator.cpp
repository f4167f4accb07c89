#include "platform/foundation/file_coordinator.h"

#include <utility>

#include "platform/foundation/service.h"
#include "platform/foundation/staged_write.h"

namespace ostra {
namespace {

/// Nobody else presents files here, so there is nobody to wait for.
class DiskCoordination : public FileCoordination {
 public:
  std::optional<NSError> coordinateWriting(const NSFilePresenter* presenter, const URL& url,
                                           NSFileCoordinatorWritingOptions,
                                           const NSFileCoordinator::Accessor& accessor) override {
    const auto primary = presenter != nullptr ? presenter->primaryPresentedItemURL() : std::nullopt;
    if (primary && url.isFileURL()) return writeRelatedItem(url, *primary, accessor);
    accessor(url);
    return std::nullopt;
  }
};

}  // namespace

NSFileCoordinator::NSFileCoordinator(std::shared_ptr<NSFilePresenter> presenter)
    : presenter_(std::move(presenter)) {}

std::optional<NSError> NSFileCoordinator::coordinateWritingItemAtURL(const URL& url,
                                                                     NSFileCoordinatorWritingOptions options,
                                                                     const Accessor& byAccessor) {
  return Service<FileCoordination>::current().coordinateWriting(presenter_.get(), url, options, byAccessor);
}

FileCoordination& FileCoordination::standard() {
  static DiskCoordination coordination;
  return coordination;
}

}  // namespace ostra
