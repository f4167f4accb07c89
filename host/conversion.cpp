#include "host/conversion.h"

#include <new>
#include <optional>

#include "chooser/profile_view_controller.h"
#include "host/bundles.h"
#include "host/exit_status.h"
#include "host/extension_host.h"
#include "host/file_list.h"
#include "host/finished_work.h"
#include "host/housekeeping.h"
#include "host/message.h"
#include "host/panel.h"
#include "host/progress_reporter.h"
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

void tell(const RequestEnd& end, const FinishedWork& work) {
  if (const auto message = hostMessage(end)) say(*message);
  tellOnDesktop(end, work);
}

/// How long work goes on before it is shown. Nobody who waits at a terminal is disturbed by a line.
std::chrono::milliseconds patienceOf(Display display, std::size_t files) {
  using namespace std::chrono_literals;
  if (display == Display::windows) return 2s;
  return files == 1 ? 1s : 100ms;
}

/// Nothing where nobody watches. The log's lines and a bar that draws over itself do not share a terminal.
std::optional<ProgressReporter> makeReporter(Display display, const CommandLine& line,
                                             const ReportedWork& work) {
  if (display == Display::lines || (display == Display::terminal && line.verbose)) return std::nullopt;
  return std::optional<ProgressReporter>(std::in_place, work);
}

/// Serves the request, with a reporter where somebody watches; how that went is noted in `work`.
std::optional<RequestEnd> serveReported(NSExtensionRequestHandling& principal,
                                        const std::vector<std::string>& files,
                                        std::optional<ProgressReporter> reporter,
                                        const std::function<void()>& openPanel, FinishedWork& work) {
  auto end = serveRequest(principal, files, reporter ? reporter->itemBegan() : nullptr, openPanel);
  if (reporter) {
    work.duration = reporter->worked();
    work.wasPutAway = reporter->wasPutAway();
  }
  return end;
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

  const StopSignals stopSignals;
  FinishedWork work{bundle.displayName(), files.size()};
  const ReportedWork reported{work.items, work.title, patienceOf(display, files.size())};
  const auto end = serveReported(*principal, files, makeReporter(display, line, reported), openPanel, work);
  const auto signal = StopSignals::received();
  if (end && !signal) tell(*end, work);
  if (!signal) tidy(files);
  return exitStatus(end, signal);
}

}  // namespace ostra
