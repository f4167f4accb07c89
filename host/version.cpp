#include "host/version.h"

namespace ostra {

std::string versionText() { return "ostra " OSTRA_VERSION "\n"; }

}  // namespace ostra
