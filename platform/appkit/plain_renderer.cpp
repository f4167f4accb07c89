#include <unistd.h>

#include "platform/appkit/plain_text.h"
#include "platform/appkit/renderer.h"

namespace ostra {
namespace {

/// Nobody looks while the work goes on, and nobody answers: there is only what stays to be read.
class PlainRenderer : public Renderer {
 public:
  void activate() override {}
  void beep() override {}
  void run(const NSAlert& alert) override { writeText(STDERR_FILENO, plainText(alert)); }
  SavePanelAnswer run(const NSSavePanel&) override { return {}; }
  bool present(const std::shared_ptr<NSViewController>&, const std::string&) override { return false; }
  void withdraw() override {}
  bool progress(const Progress&) override { return true; }
  void notify(const std::string&, const std::string&) override {}
};

}  // namespace

Renderer& Renderer::standard() {
  static PlainRenderer renderer;
  return renderer;
}

}  // namespace ostra
