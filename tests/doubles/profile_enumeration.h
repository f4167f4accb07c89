#pragma once
#include "platform/colorsync/profiles.h"
#include "platform/foundation/service.h"
#include "tests/doubles/call_log.h"

namespace ostra::test {

/// Installed profiles that the test makes up. A null one stands for a profile of which nothing is known.
class ScriptedProfileEnumeration : public ProfileEnumeration {
 public:
  explicit ScriptedProfileEnumeration(CallLog& log) : log_(log) {}

  void iterate(const ColorSyncProfileIterateCallback& callback) override {
    log_.add("enumerate profiles");
    for (const auto& profile : profiles) {
      if (!callback(profile ? &*profile : nullptr)) {
        log_.add("enumeration ended early");
        return;
      }
    }
  }

  /// A profile of which all is known.
  ColorSyncProfileInfo& add(const std::string& description, const std::string& path,
                            const char* space = "RGB ", const char* profileClass = "mntr") {
    profiles.push_back(ColorSyncProfileInfo{{std::string(kColorSyncProfileDescription), Value(description)},
                                            {std::string(kColorSyncProfileURL), URL::fileURLWithPath(path)},
                                            {std::string(kColorSyncProfileColorSpace), Value(space)},
                                            {std::string(kColorSyncProfileClass), Value(profileClass)}});
    return *profiles.back();
  }

  std::vector<std::optional<ColorSyncProfileInfo>> profiles;

 private:
  CallLog& log_;
};

}  // namespace ostra::test
