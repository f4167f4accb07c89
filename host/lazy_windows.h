#pragma once
#include <atomic>
#include <functional>
#include <string>

#include "platform/appkit/renderer.h"

namespace ostra {

/// The desktop's windows, loaded when something must be shown and not before. Where they cannot be loaded,
/// one sentence on standard error says why, alerts are plain lines, and nobody can be asked.
class LazyWindows : public Renderer {
 public:
  /// Gives the windows, or null with the reason, a sentence.
  using Load = std::function<Renderer*(std::string& reason)>;
  explicit LazyWindows(Load load);

  /// Of windows that are not there yet, the first comes to the front by itself.
  void activate() override;
  void beep() override;
  void run(const NSAlert& alert) override;
  SavePanelAnswer run(const NSSavePanel& panel) override;
  bool present(const std::shared_ptr<NSViewController>& controller, const std::string& title) override;
  void withdraw() override;
  /// Loads windows only for work that goes on.
  bool progress(const Progress& progress) override;
  void notify(const std::string& title, const std::string& text) override;

 private:
  /// The windows, or the plain lines.
  Renderer& shown();

  const Load load_;
  bool tried_ = false;
  /// Atomic because `withdraw` looks at it from any thread.
  std::atomic<Renderer*> loaded_{nullptr};
};

}  // namespace ostra
