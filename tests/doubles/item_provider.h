#pragma once
#include <chrono>
#include <thread>

#include "platform/dispatch/queue.h"
#include "platform/extension/item_provider.h"
#include "tests/doubles/call_log.h"
#include "tests/doubles/failing_step.h"

namespace ostra::test {

/// A provider whose answers the test writes. Handlers are called on a background queue, as the real ones are.
class ScriptedItemProvider : public NSItemProvider {
 public:
  explicit ScriptedItemProvider(CallLog& log) : log_(log) {}

  std::vector<std::string> registeredTypeIdentifiers() const override { return types; }
  std::optional<std::string> suggestedName() const override { return name; }
  bool hasItemConformingToTypeIdentifier(std::string_view typeIdentifier) const override {
    log_.add("has " + std::string(typeIdentifier));
    return hasFileURL && typeIdentifier == "public.file-url";
  }

  void loadInPlaceFileRepresentationForTypeIdentifier(std::string_view typeIdentifier,
                                                      InPlaceHandler completionHandler) override {
    log_.add("load in place " + std::string(typeIdentifier));
    steps.take();
    globalQueue(QualityOfService::userInitiated).async([this, handler = std::move(completionHandler)] {
      handler(url, isInPlace, error);
    });
  }
  void loadItemForTypeIdentifier(std::string_view typeIdentifier, ItemHandler completionHandler) override {
    log_.add("load item " + std::string(typeIdentifier));
    steps.take();
    globalQueue(QualityOfService::userInitiated).async([this, handler = std::move(completionHandler)] {
      std::this_thread::sleep_for(itemDelay);
      handler(item, itemError);
    });
  }

  std::vector<std::string> types{"public.png"};
  std::optional<std::string> name;
  std::optional<URL> url;
  bool isInPlace = true;
  std::exception_ptr error{};
  bool hasFileURL = false;
  Item item;
  std::exception_ptr itemError{};
  /// How long the loading of the item takes.
  std::chrono::milliseconds itemDelay{0};
  /// Counts the loads.
  FailingStep steps;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
