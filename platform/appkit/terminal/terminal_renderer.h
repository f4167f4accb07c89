#pragma once
#include <memory>
#include <optional>
#include <string>

#include "platform/appkit/renderer.h"
#include "platform/appkit/terminal/ask.h"
#include "platform/foundation/unique_fd.h"

namespace ostra {

/// Shows everything as text. Questions and the progress bar go to the controlling terminal, whatever the
/// standard streams are; failures go to standard error. A question that a signal interrupts counts as
/// cancelled, and so does the one that stands when it is withdrawn, and every later one.
class TerminalRenderer : public Renderer {
 public:
  explicit TerminalRenderer(const std::string& terminal = "/dev/tty");

  void activate() override {}
  void beep() override;
  /// Prints and returns; nobody has to press a key.
  void run(const NSAlert& alert) override;
  SavePanelAnswer run(const NSSavePanel& panel) override;
  bool present(const std::shared_ptr<NSViewController>& controller, const std::string& title) override;
  void withdraw() override;
  /// Draws the bar over itself; takes it away when all is done.
  bool progress(const Progress& progress) override;
  /// Nothing: whoever looks at the terminal sees that the program has ended.
  void notify(const std::string&, const std::string&) override {}

 private:
  /// Puts questions on the terminal; once no answer came, none is put any more.
  Ask asking() const;
  std::optional<std::string> readLine() const;
  void clearProgress();

  const UniqueFd terminal_;
  /// Readable once withdrawn.
  const UniqueFd withdrawn_;
  bool progressShown_ = false;
};

}  // namespace ostra
