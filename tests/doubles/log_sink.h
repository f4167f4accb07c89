#pragma once
#include <set>

#include "platform/log/log.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// Takes the lines of the levels that are on, and counts how often it was asked about a level.
class RecordingLogSink : public LogSink {
 public:
  explicit RecordingLogSink(CallLog& log) : log_(log) {}

  bool isEnabled(LogLevel level) override {
    ++timesAsked;
    return enabled.count(level) > 0;
  }
  void write(const std::string& subsystem, const std::string& category, LogLevel level,
             const LogMessage& message) override {
    const std::string line = std::string(level == LogLevel::error ? "error " : "info ") + message.text;
    log_.add("log " + line);
    lines.push_back(line);
    origins.insert(subsystem + "/" + category);
    messages.push_back(message);
    if (failure) std::rethrow_exception(failure);
  }

  std::set<LogLevel> enabled{LogLevel::info, LogLevel::error};
  int timesAsked = 0;
  std::vector<std::string> lines;
  std::vector<LogMessage> messages;
  /// Subsystem and category of the lines.
  std::set<std::string> origins;
  /// Thrown by every line, where there is one.
  std::exception_ptr failure{};

 private:
  CallLog& log_;
};

}  // namespace ostra::test
