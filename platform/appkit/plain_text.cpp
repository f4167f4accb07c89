#include "platform/appkit/plain_text.h"

#include <cerrno>
#include <sstream>

#include <unistd.h>

#include "platform/foundation/printable.h"

namespace ostra {

std::string plainText(const NSAlert& alert) {
  std::string text = alert.messageText + "\n";
  std::istringstream lines(alert.informativeText);
  for (std::string line; std::getline(lines, line);) text += "  " + line + "\n";
  return printable(text);
}

void writeText(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace ostra
