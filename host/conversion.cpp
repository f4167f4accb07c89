#include "host/conversion.h"

#include "host/bundles.h"
#include "host/exit_status.h"
#include "host/extension_host.h"
#include "host/file_list.h"
#include "host/housekeeping.h"
#include "host/message.h"
#include "host/stop_signals.h"
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

void tell(const RequestEnd& end) {
  if (const auto message = hostMessage(end)) say(*message);
}

}  // namespace

int performAction(const CommandLine& line) {
  const Bundle bundle = bundleFor(line);
  const auto principal = makePrincipalObject(bundle.principalClassName());
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
      serveRequest(*principal, files, watched ? ProgressDisplay::shown : ProgressDisplay::hidden);
  const auto signal = StopSignals::received();
  if (end && !signal) tell(*end);
  if (!signal) cleanUpAfterFormerRuns(files);
  return exitStatus(end, signal);
}

}  // namespace ostra
