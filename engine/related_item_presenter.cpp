#include "engine/related_item_presenter.h"

namespace ostra {

OstraRelatedItemPresenter::OstraRelatedItemPresenter(URL primaryURL, URL relatedURL)
    : primaryURL_(std::move(primaryURL)),
      relatedURL_(std::move(relatedURL)),
      queue_(std::make_shared<NSOperationQueue>()) {
  queue_->setMaxConcurrentOperationCount(1);
}

}  // namespace ostra
