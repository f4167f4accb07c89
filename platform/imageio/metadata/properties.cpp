#include "platform/imageio/properties.h"

#include "platform/imageio/metadata/carrier.h"

namespace ostra {

bool Properties::remove(std::string_view key) {
  const auto found = tree.find(key);
  if (found == tree.end()) return false;
  tree.erase(found);
  // Groups alone have a part of the carrier that belongs to nothing else; other keys are compared when it is
  // written.
  if (!carrier || !key.starts_with('{')) return true;
  Carrier rest = carrierWithoutGroup(*carrier, key);
  carrier = rest.empty() ? nullptr : std::make_shared<const Carrier>(std::move(rest));
  return true;
}

bool Properties::empty() const { return tree.empty() && (!carrier || carrier->empty()); }

}  // namespace ostra
