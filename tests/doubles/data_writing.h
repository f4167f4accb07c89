#pragma once
#include <map>

#include "platform/foundation/data.h"
#include "tests/doubles/call_log.h"
#include "tests/doubles/failing_step.h"

namespace ostra::test {

/// A disk in memory: what was written, by path.
class RecordingDataWriting : public DataWriting {
 public:
  explicit RecordingDataWriting(CallLog& log) : log_(log) {}

  void write(ByteView data, const URL& url, NSDataWritingOptions options) override {
    log_.add("write " + url.path() + (options == NSDataWritingOptions::atomic ? " atomically" : ""));
    steps.take();
    files[url.path()] = Bytes(data.begin(), data.end());
  }

  FailingStep steps;
  std::map<std::string, Bytes> files;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
