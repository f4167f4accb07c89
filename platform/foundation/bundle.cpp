#include "platform/foundation/bundle.h"

#include "platform/foundation/error.h"
#include "platform/foundation/file_reading.h"
#include "platform/foundation/property_list.h"
#include "platform/foundation/service.h"

namespace ostra {

NSBundle& NSBundle::mainBundle() { return Service<NSBundle>::current(); }

NSBundle& NSBundle::standard() {
  static PropertyListBundle bundle{Dictionary()};
  return bundle;
}

std::optional<Value> PropertyListBundle::objectForInfoDictionaryKey(std::string_view key) const {
  const auto found = info_.find(key);
  if (found == info_.end()) return std::nullopt;
  return found->second;
}

Dictionary readBundleInfo(const URL& bundle) {
  const URL list = bundle.appendingPathComponent("Info.plist");
  const Bytes bytes = readSmallFile(list, kLargestPropertyList);
  try {
    Value value = readPropertyList(bytes);
    if (auto* info = value.get<Dictionary>()) return std::move(*info);
  } catch (const NSError&) {
    // Said again below, with the name of the file.
  }
  throw NSError(NSCocoaErrorDomain, NSFileReadCorruptFileError,
                {{std::string(NSFilePathErrorKey), list.path()}});
}

}  // namespace ostra
