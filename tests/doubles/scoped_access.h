#pragma once
#include "platform/foundation/url.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// Grants access, or does not.
class RecordingScopedAccess : public ScopedAccess {
 public:
  explicit RecordingScopedAccess(CallLog& log) : log_(log) {}

  bool start(const URL& url) override {
    log_.add("start access " + url.path());
    return grants;
  }
  void stop(const URL& url) override { log_.add("stop access " + url.path()); }

  bool grants = true;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
