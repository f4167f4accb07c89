#include "platform/foundation/service.h"
#include "platform/log/log.h"

namespace ostra {

Logger::Logger(std::string subsystem, std::string category)
    : subsystem_(std::move(subsystem)), category_(std::move(category)) {}

void Logger::log(LogLevel level, const std::function<LogMessage()>& message) const {
  LogSink& sink = Service<LogSink>::current();
  if (sink.isEnabled(level)) sink.write(subsystem_, category_, level, message());
}

}  // namespace ostra
