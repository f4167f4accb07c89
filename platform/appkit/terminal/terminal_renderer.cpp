#include "platform/appkit/terminal/terminal_renderer.h"

#include <algorithm>
#include <iterator>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/appkit/plain_text.h"
#include "platform/appkit/terminal/panel_question.h"
#include "platform/appkit/terminal/save_question.h"
#include "platform/foundation/printable.h"

namespace ostra {
namespace {

constexpr std::size_t kBarWidth = 20;
constexpr std::size_t kReadableWidth = 80;
constexpr const char* kClearLine = "\r\033[K";

std::size_t columnsOf(int terminal) {
  winsize size{};
  return ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

/// `text` (UTF-8) of at most so many characters.
std::string_view shortened(std::string_view text, std::size_t most) {
  std::size_t end = 0;
  for (std::size_t count = 0; end < text.size(); ++end) {
    const bool startsCharacter = (static_cast<unsigned char>(text[end]) & 0xC0) != 0x80;
    if (startsCharacter && count++ == most) break;
  }
  return text.substr(0, end);
}

std::string barLine(const Progress& progress, std::size_t columns) {
  const std::size_t filled = progress.total == 0 ? 0 : progress.done * kBarWidth / progress.total;
  const std::string line = "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " +
                           std::to_string(progress.done) + " of " + std::to_string(progress.total) + "  " +
                           printableLine(progress.name);
  // One column stays free: a full line would wrap, and could not be drawn over.
  return std::string(shortened(line, columns - 1));
}

}  // namespace

TerminalRenderer::TerminalRenderer(const std::string& terminal)
    : terminal_(open(terminal.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)),
      withdrawn_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void TerminalRenderer::beep() { writeText(terminal_.get(), "\a"); }

void TerminalRenderer::run(const NSAlert& alert) {
  clearProgress();
  writeText(STDERR_FILENO, plainText(alert));
}

SavePanelAnswer TerminalRenderer::run(const NSSavePanel& panel) {
  if (!terminal_) return {};
  clearProgress();
  const auto url = askWhereToSave(panel, asking());
  return url ? SavePanelAnswer{NSModalResponseOK, url} : SavePanelAnswer{};
}

bool TerminalRenderer::present(const std::shared_ptr<NSViewController>& controller,
                               const std::string& title) {
  if (!terminal_) return false;
  clearProgress();
  askPanel(controller->view(), title, std::min(columnsOf(terminal_.get()), kReadableWidth), asking());
  return true;
}

void TerminalRenderer::withdraw() { [[maybe_unused]] const int full = eventfd_write(withdrawn_.get(), 1); }

Ask TerminalRenderer::asking() const {
  return [this, line = std::optional<std::string>("")](const std::string& question) mutable {
    if (!line) return line;
    writeText(terminal_.get(), printable(question));
    line = readLine();
    if (!line) writeText(terminal_.get(), "\n");
    return line;
  };
}

/// The next line; nothing at the end of the input, after a withdrawal, or when a signal came.
std::optional<std::string> TerminalRenderer::readLine() const {
  pollfd events[] = {{terminal_.get(), POLLIN, 0}, {withdrawn_.get(), POLLIN, 0}};
  std::string line;
  for (;;) {
    if (poll(events, std::size(events), -1) < 0 || events[1].revents != 0) return std::nullopt;
    char c = 0;
    if (read(terminal_.get(), &c, 1) != 1) return std::nullopt;
    if (c == '\n') return line;
    line += c;
  }
}

bool TerminalRenderer::progress(const Progress& progress) {
  if (!terminal_) return true;
  if (progress.done >= progress.total) {
    clearProgress();
    return true;
  }
  writeText(terminal_.get(), kClearLine + barLine(progress, columnsOf(terminal_.get())));
  progressShown_ = true;
  return true;
}

void TerminalRenderer::clearProgress() {
  if (progressShown_) writeText(terminal_.get(), kClearLine);
  progressShown_ = false;
}

}  // namespace ostra
