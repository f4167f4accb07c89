#pragma once
#include <functional>
#include <memory>
#include <optional>

#include "platform/foundation/error.h"
#include "platform/foundation/file_presenter.h"
#include "platform/foundation/url.h"

namespace ostra {

enum class NSFileCoordinatorWritingOptions : unsigned { forReplacing = 8 };

/// Coordinates one write with everybody else who works on the file. It takes no lock and creates nothing.
///
/// With a presenter that names a primary item, the write is that of a related item, and an existing
/// destination is protected: the accessor receives a staging place of the same name, and what stands there
/// afterwards takes over the attributes of the old file and its place in one step. Nothing there: the old
/// file stays.
class NSFileCoordinator {
 public:
  using Accessor = std::function<void(const URL&)>;

  /// The presenter may be null.
  explicit NSFileCoordinator(std::shared_ptr<NSFilePresenter> presenter);

  /// Synchronous, on the calling thread. Gives back the coordination error, in which case the accessor was
  /// not run or what it wrote was not put in place. The accessor must not throw.
  std::optional<NSError> coordinateWritingItemAtURL(const URL& url, NSFileCoordinatorWritingOptions options,
                                                    const Accessor& byAccessor);

 private:
  std::shared_ptr<NSFilePresenter> presenter_;
};

/// The service behind the coordinator. Replaceable through `Service<FileCoordination>`.
class FileCoordination {
 public:
  virtual ~FileCoordination() = default;
  virtual std::optional<NSError> coordinateWriting(const NSFilePresenter* presenter, const URL& url,
                                                   NSFileCoordinatorWritingOptions options,
                                                   const NSFileCoordinator::Accessor& accessor) = 0;
  static FileCoordination& standard();
};

}  // namespace ostra
