#include "platform/appkit/alert.h"

#include "platform/appkit/renderer.h"
#include "platform/foundation/service.h"

namespace ostra {

void NSAlert::addButtonWithTitle(std::string title) { buttons.push_back(std::move(title)); }

void NSAlert::runModal() const { Service<Renderer>::current().run(*this); }

}  // namespace ostra
