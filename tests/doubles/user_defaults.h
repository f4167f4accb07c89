#pragma once
#include <map>

#include "platform/foundation/user_defaults.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// Settings in memory. What is lost on writing can be chosen.
class RecordingUserDefaults : public NSUserDefaults {
 public:
  explicit RecordingUserDefaults(CallLog& log) : log_(log) {}

  std::optional<std::string> stringForKey(std::string_view key) const override {
    log_.add("read setting " + std::string(key));
    const auto found = settings.find(key);
    return found != settings.end() ? std::optional(found->second) : std::nullopt;
  }
  void setString(std::string_view value, std::string_view key) override {
    log_.add("write setting " + std::string(key) + " = " + std::string(value));
    if (!losesWrites) settings.insert_or_assign(std::string(key), std::string(value));
  }

  std::map<std::string, std::string, std::less<>> settings;
  bool losesWrites = false;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
