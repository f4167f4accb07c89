#include <exception>

#include "host/bundles.h"
#include "host/command_line.h"
#include "host/confined_decoding.h"
#include "host/conversion.h"
#include "host/exit_status.h"
#include "host/formats.h"
#include "host/integration/integrate.h"
#include "host/message.h"
#include "host/process.h"
#include "host/version.h"

namespace {

int perform(const ostra::CommandLine& line) {
  using namespace ostra;
  switch (line.command) {
    case CommandLine::Command::help:
      return print(helpText());
    case CommandLine::Command::version:
      return print(versionText());
    case CommandLine::Command::list:
      return print(bundleList(bundlesIn(bundlesFolder())));
    case CommandLine::Command::profiles:
      return listProfiles();
    case CommandLine::Command::formats:
      return print(formatList());
    case CommandLine::Command::integrate:
      return integrate({.remove = line.remove, .isRehearsal = line.isRehearsal});
    case CommandLine::Command::convert: {
      const ConfinedDecoding confined;
      return performAction(line);
    }
  }
  return kUsageStatus;
}

}  // namespace

int main(int argc, char** argv) {
  ostra::prepareProcess();
  try {
    return perform(ostra::parseCommandLine({argv + 1, argv + argc}));
  } catch (const std::exception& failure) {
    ostra::say(failure.what());
    return ostra::kUsageStatus;
  }
}
