#pragma once
#include "platform/appkit/application.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// The shared application, for as long as it lives.
class RecordingApplication : public NSApplication {
 public:
  explicit RecordingApplication(CallLog& log) : log_(log) { NSApplication::setShared(this); }
  ~RecordingApplication() override { NSApplication::setShared(nullptr); }
  RecordingApplication(const RecordingApplication&) = delete;
  RecordingApplication& operator=(const RecordingApplication&) = delete;

  void activateIgnoringOtherApps(bool ignoring) override {
    log_.add(ignoring ? "activate ignoring others" : "activate");
  }

 private:
  CallLog& log_;
};

}  // namespace ostra::test
