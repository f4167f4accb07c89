#include "engine/log.h"

#include "front/error.h"
#include "platform/log/log.h"

namespace ostra {
namespace {

const Logger& engineLog() {
  static const Logger logger{std::string(kBundleIdentifier), "QuickAction"};
  return logger;
}

}  // namespace

void logWritten(OstraQuickActionKind kind, const std::string& destinationName, bool inPlace) {
  engineLog().log(LogLevel::info, [&] {
    const std::string action(rawValue(kind));
    const std::string place = inPlace ? "in place" : "sibling";
    return LogMessage{action + ": wrote " + destinationName + " (" + place + ")",
                      {{"OSTRA_ACTION", action}, {"OSTRA_FILE", destinationName}, {"OSTRA_PLACE", place}}};
  });
}

void logFailure(OstraQuickActionKind kind, const std::exception_ptr& failure) {
  engineLog().log(LogLevel::error, [&] {
    const std::string action(rawValue(kind));
    const std::string description = localizedDescription(failure);
    return LogMessage{action + ": " + description, {{"OSTRA_ACTION", action}, {"OSTRA_ERROR", description}}};
  });
}

void logRefusal(OstraQuickActionKind kind, const NSError& refusal) {
  engineLog().log(LogLevel::error, [&] {
    const std::string action(rawValue(kind));
    const std::string error = refusal.debugDescription();
    return LogMessage{action + ": sibling write refused (" + error + "), asking with a save panel",
                      {{"OSTRA_ACTION", action}, {"OSTRA_ERROR", error}}};
  });
}

}  // namespace ostra
