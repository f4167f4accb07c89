#pragma once
#include <memory>

#include "platform/appkit/view.h"
#include "platform/extension/request_handling.h"

namespace ostra {

/// The principal object of a bundle with a user interface: it describes a view and answers to it. The host
/// begins the request and presents the controller; the view is described when it is first asked for. Owned by
/// a `shared_ptr`. Main thread.
class NSViewController : public NSExtensionRequestHandling,
                         public std::enable_shared_from_this<NSViewController> {
 public:
  /// Keeps the context and returns.
  void beginRequestWithExtensionContext(std::shared_ptr<NSExtensionContext> context) override;
  /// The request, or null before it has begun.
  const std::shared_ptr<NSExtensionContext>& extensionContext() const { return context_; }

  /// The root view. The first call loads it, then calls `viewDidLoad`.
  const std::shared_ptr<NSView>& view();
  const CGSize& preferredContentSize() const { return preferredContentSize_; }

  /// Describes the view and hands it to `setView`. Not called from outside.
  virtual void loadView() = 0;
  virtual void viewDidLoad() {}

 protected:
  void setView(std::shared_ptr<NSView> view) { view_ = std::move(view); }
  void setPreferredContentSize(CGSize size) { preferredContentSize_ = size; }

 private:
  std::shared_ptr<NSExtensionContext> context_;
  std::shared_ptr<NSView> view_;
  CGSize preferredContentSize_;
};

}  // namespace ostra
