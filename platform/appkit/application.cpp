#include "platform/appkit/application.h"

namespace ostra {
namespace {

NSApplication* sharedApplication = nullptr;

}  // namespace

NSApplication* NSApplication::shared() { return sharedApplication; }

void NSApplication::setShared(NSApplication* application) { sharedApplication = application; }

}  // namespace ostra
