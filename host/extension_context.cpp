#include "host/extension_context.h"

#include "platform/dispatch/main_loop.h"

namespace ostra {

void HostExtensionContext::completeRequestReturningItems(const InputItems&,
                                                         std::function<void(bool)> completionHandler) {
  // The files are where they belong already: returned items would have no receiver.
  const bool first = finish({});
  if (first && completionHandler) completionHandler(false);
}

void HostExtensionContext::cancelRequestWithError(const NSError& error) { finish({error}); }

bool HostExtensionContext::finish(RequestEnd end) {
  if (end_) return false;
  end_ = std::move(end);
  MainLoop::stop();
  return true;
}

}  // namespace ostra
