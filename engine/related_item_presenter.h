#pragma once
#include "platform/foundation/file_presenter.h"

namespace ostra {

/// Tells the coordinator of one write that the file about to be written belongs to the file that the user
/// selected. Lives as long as that coordinator and is registered nowhere.
class OstraRelatedItemPresenter : public NSFilePresenter {
 public:
  OstraRelatedItemPresenter(URL primaryURL, URL relatedURL);

  std::optional<URL> presentedItemURL() const override { return relatedURL_; }
  std::optional<URL> primaryPresentedItemURL() const override { return primaryURL_; }
  std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override { return queue_; }

 private:
  URL primaryURL_;
  URL relatedURL_;
  std::shared_ptr<NSOperationQueue> queue_;  // one message at a time
};

}  // namespace ostra
