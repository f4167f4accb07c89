#pragma once
#include <memory>
#include <optional>

#include "platform/foundation/operation_queue.h"
#include "platform/foundation/url.h"

namespace ostra {

/// Somebody who shows or owns a file and tells the coordinator so.
class NSFilePresenter {
 public:
  virtual ~NSFilePresenter() = default;
  virtual std::optional<URL> presentedItemURL() const = 0;
  /// For a related item: the file that the user chose, to which the presented one belongs.
  virtual std::optional<URL> primaryPresentedItemURL() const = 0;
  virtual std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const = 0;
};

}  // namespace ostra
