#pragma once
#include "platform/foundation/bundle.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// A bundle whose property list the test writes.
class RecordingBundle : public NSBundle {
 public:
  explicit RecordingBundle(CallLog& log) : log_(log) {}

  std::optional<Value> objectForInfoDictionaryKey(std::string_view key) const override {
    log_.add("bundle " + std::string(key));
    const auto found = info.find(key);
    return found != info.end() ? std::optional(found->second) : std::nullopt;
  }

  Dictionary info;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
