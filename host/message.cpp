#include "host/message.h"

#include <cstdio>
#include <string>

#include "host/exit_status.h"
#include "platform/foundation/printable.h"

namespace ostra {

void say(std::string_view sentence) {
  std::fputs(printable("ostra: " + std::string(sentence) + "\n").c_str(), stderr);
}

int print(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) == 0) return kCompletedStatus;
  say("The output could not be written.");
  return kUsageStatus;
}

}  // namespace ostra
