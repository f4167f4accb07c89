#include "platform/appkit/save_panel.h"

#include <utility>

#include "platform/appkit/renderer.h"
#include "platform/foundation/service.h"

namespace ostra {

void NSSavePanel::setTitle(std::string title) {
  title_ = std::move(title);
  settings_.push_back(Setting::title);
}

void NSSavePanel::setMessage(std::string message) {
  message_ = std::move(message);
  settings_.push_back(Setting::message);
}

void NSSavePanel::setNameFieldStringValue(std::string name) {
  name_ = std::move(name);
  settings_.push_back(Setting::nameFieldStringValue);
}

void NSSavePanel::setDirectoryURL(URL directory) {
  directory_ = std::move(directory);
  settings_.push_back(Setting::directoryURL);
}

void NSSavePanel::setAllowedContentTypes(std::vector<UTType> types) {
  types_ = std::move(types);
  settings_.push_back(Setting::allowedContentTypes);
}

void NSSavePanel::setCanCreateDirectories(bool allowed) {
  canCreateDirectories_ = allowed;
  settings_.push_back(Setting::canCreateDirectories);
}

NSModalResponse NSSavePanel::runModal() {
  const SavePanelAnswer answer = Service<Renderer>::current().run(*this);
  url_ = answer.url;
  return answer.response;
}

}  // namespace ostra
