#include "platform/foundation/user_defaults.h"

#include <mutex>

#include "platform/foundation/data.h"
#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"
#include "platform/foundation/property_list.h"
#include "platform/foundation/service.h"
#include "platform/foundation/user_folders.h"

namespace ostra {
namespace {

/// Read anew for every question: several of our processes may run, and a process asks once or twice.
class PropertyListDefaults : public NSUserDefaults {
 public:
  std::optional<std::string> stringForKey(std::string_view key) const override {
    const std::lock_guard lock(mutex_);
    const Dictionary settings = read();
    const auto found = settings.find(key);
    const auto* text = found != settings.end() ? found->second.get<std::string>() : nullptr;
    if (text == nullptr) return std::nullopt;
    return *text;
  }

  void setString(std::string_view value, std::string_view key) override {
    const std::lock_guard lock(mutex_);
    const auto folder = settingsFolder();
    if (!folder || !makeFolders(*folder)) return;
    Dictionary settings = read();
    settings.insert_or_assign(std::string(key), Value(value));
    try {
      DataWriting::standard().write(writePropertyList(settings), fileIn(*folder),
                                    NSDataWritingOptions::atomic);
    } catch (const NSError&) {
      // A choice that is not remembered is no reason to trouble anybody.
    }
  }

 private:
  static URL fileIn(const std::string& folder) { return URL::fileURLWithPath(folder + "/defaults.plist"); }

  static Dictionary read() {
    const auto folder = settingsFolder();
    if (!folder) return {};
    try {
      Value value = readPropertyList(readSmallFile(fileIn(*folder), kLargestPropertyList));
      auto* settings = value.get<Dictionary>();
      return settings != nullptr ? std::move(*settings) : Dictionary();
    } catch (const NSError&) {
      return {};
    }
  }

  mutable std::mutex mutex_;
};

}  // namespace

NSUserDefaults& NSUserDefaults::standardUserDefaults() { return Service<NSUserDefaults>::current(); }

NSUserDefaults& NSUserDefaults::standard() {
  static PropertyListDefaults defaults;
  return defaults;
}

}  // namespace ostra
