#include <gtest/gtest.h>

#include "platform/foundation/service.h"
#include "platform/log/log.h"

namespace ostra {
namespace {

class OneLevelSink : public LogSink {
 public:
  bool isEnabled(LogLevel level) override { return level == LogLevel::error; }
  void write(const std::string& subsystem, const std::string& category, LogLevel,
             const LogMessage& message) override {
    line = subsystem + "/" + category + "/" + message.text;
  }
  std::string line;
};

TEST(Logger, FormatsALineOnlyWhenItsLevelIsEnabled) {
  OneLevelSink sink;
  const Service<LogSink>::Override override(sink);
  const Logger logger("org.example", "Tests");
  int formatted = 0;
  const auto message = [&formatted] {
    ++formatted;
    return LogMessage{"text", {}};
  };
  logger.log(LogLevel::info, message);
  EXPECT_EQ(formatted, 0);
  logger.log(LogLevel::error, message);
  EXPECT_EQ(formatted, 1);
  EXPECT_EQ(sink.line, "org.example/Tests/text");
}

}  // namespace
}  // namespace ostra
