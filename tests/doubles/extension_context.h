#pragma once
#include <functional>

#include "platform/dispatch/queue.h"
#include "platform/extension/context.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// A request whose end is noted; `ended` is called at each end.
class RecordingExtensionContext : public NSExtensionContext {
 public:
  explicit RecordingExtensionContext(CallLog& log) : log_(log) {}

  InputItems inputItems() const override { return items; }
  void completeRequestReturningItems(const InputItems& returned,
                                     std::function<void(bool)> completionHandler) override {
    log_.add("complete with " + std::to_string(returned.size()) + " items" +
             (completionHandler ? " and a handler" : "") + place());
    if (ended) ended();
  }
  void cancelRequestWithError(const NSError& error) override {
    log_.add("cancel " + std::to_string(error.code()) + place());
    errors.push_back(error);
    if (ended) ended();
  }

  InputItems items;
  std::vector<NSError> errors;
  std::function<void()> ended;

 private:
  static std::string place() { return isMainThread() ? "" : " off the main thread"; }
  CallLog& log_;
};

}  // namespace ostra::test
