#include "platform/colorsync/profiles.h"

#include "platform/colorsync/profile_facts.h"
#include "platform/colorsync/profile_folders.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

class FolderEnumeration : public ProfileEnumeration {
 public:
  void iterate(const ColorSyncProfileIterateCallback& callback) override {
    visitProfileFiles(profileFolders(), [&callback](const std::string& path, int file) {
      const auto facts = profileFacts(file);
      if (!facts) return true;
      const ColorSyncProfileInfo info{{std::string(kColorSyncProfileDescription), Value(facts->description)},
                                      {std::string(kColorSyncProfileURL), URL::fileURLWithPath(path)},
                                      {std::string(kColorSyncProfileColorSpace), Value(facts->colorSpace)},
                                      {std::string(kColorSyncProfileClass), Value(facts->profileClass)}};
      return callback(&info);
    });
  }
};

}  // namespace

ProfileEnumeration& ProfileEnumeration::standard() {
  static FolderEnumeration enumeration;
  return enumeration;
}

void ColorSyncIterateInstalledProfiles(const ColorSyncProfileIterateCallback& callback) {
  Service<ProfileEnumeration>::current().iterate(callback);
}

}  // namespace ostra
