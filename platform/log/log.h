#pragma once
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace ostra {

enum class LogLevel { info, error };

/// One line of the log, and its parts by name for whoever searches the log: upper-case ASCII field names.
struct LogMessage {
  std::string text;
  std::vector<std::pair<std::string, std::string>> fields;
};

/// Where log lines go. Any thread. Replaceable through `Service<LogSink>`.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual bool isEnabled(LogLevel level) = 0;
  virtual void write(const std::string& subsystem, const std::string& category, LogLevel level,
                     const LogMessage& message) = 0;
  /// The system's journal; lines on standard error too after `setLogVerbose(true)`.
  static LogSink& standard();
};

/// One source of log lines. Immutable; any thread.
class Logger {
 public:
  Logger(std::string subsystem, std::string category);
  /// `message` is called, once, only when the level is enabled.
  void log(LogLevel level, const std::function<LogMessage()>& message) const;

 private:
  std::string subsystem_;
  std::string category_;
};

/// Whether the standard sink also writes its lines, as text, to standard error. Off at start.
void setLogVerbose(bool verbose);

}  // namespace ostra
