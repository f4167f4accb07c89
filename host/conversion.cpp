#include "host/conversion.h"

#include <new>

#include "chooser/profile_view_controller.h"
#include "host/bundles.h"
#include "host/exit_status.h"
#include "host/extension_host.h"
#include "host/file_list.h"
#include "host/housekeeping.h"
#include "host/message.h"
#include "host/panel.h"
#include "host/stop_signals.h"
#include "host/usage_error.h"
#include "host/user_interface.h"
#include "platform/foundation/bundle.h"
#include "platform/graphics/color_space.h"
#include "platform/log/log.h"

namespace ostra {
namespace {

Bundle bundleFor(const CommandLine& line) {
  return line.bundle ? readBundle(*line.bundle) : bundleOfAction(bundlesFolder(), line.action);
}

std::vector<std::string> filesFor(const CommandLine& line) {
  std::vector<std::string> files = line.files;
  if (!line.filesFrom) return files;
  const std::vector<std::string> further = readFileList(*line.filesFrom);
  files.insert(files.end(), further.begin(), further.end());
  return files;
}

/// What opens the panel of the object, or nothing for one that has none.
std::function<void()> panelOpening(const std::shared_ptr<NSExtensionRequestHandling>& principal,
                                   const Bundle& bundle, const CommandLine& line) {
  const auto controller = std::dynamic_pointer_cast<NSViewController>(principal);
  if (!controller && line.profile) throw UsageError("--profile is for “convert-color-profile” only.");
  if (!controller) return nullptr;
  if (line.profile) return [controller, name = *line.profile] { answerPanel(controller, name); };
  return [controller, title = bundle.displayName()] { showPanel(controller, title); };
}

/// What former runs left can wait for another run.
void tidy(const std::vector<std::string>& files) {
  try {
    cleanUpAfterFormerRuns(files);
  } catch (const std::bad_alloc&) {
  }
}

void tell(const RequestEnd& end) {
  if (const auto message = hostMessage(end)) say(*message);
}

}  // namespace

int listProfiles() { return print(panelChoices(std::make_shared<OstraQuickActionProfileViewController>())); }

int performAction(const CommandLine& line) {
  const Bundle bundle = bundleFor(line);
  const auto principal = makePrincipalObject(bundle.principalClassName());
  const auto openPanel = panelOpening(principal, bundle, line);
  const std::vector<std::string> files = filesFor(line);

  PropertyListBundle mainBundle(bundle.info);
  const Service<NSBundle>::Override running(mainBundle);
  const Display display = chooseDisplay(line.userInterface, Surroundings::current());
  const UserInterface userInterface(display);
  setLogVerbose(line.verbose);
  prepareNamedColorSpaces();

  // The log's lines and a bar that draws over itself do not share a terminal.
  const bool watched = display == Display::terminal && !line.verbose;
  const StopSignals stopSignals;
  const auto end =
      serveRequest(*principal, files, watched ? ProgressDisplay::shown : ProgressDisplay::hidden, openPanel);
  const auto signal = StopSignals::received();
  if (end && !signal) tell(*end);
  if (!signal) tidy(files);
  return exitStatus(end, signal);
}

}  // namespace ostra
