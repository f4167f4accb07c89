#include "host/lazy_windows.h"

#include <utility>

#include "host/message.h"

namespace ostra {

LazyWindows::LazyWindows(Load load) : load_(std::move(load)) {}

Renderer& LazyWindows::shown() {
  if (!std::exchange(tried_, true)) {
    std::string reason;
    loaded_ = load_(reason);
    if (loaded_ == nullptr) say(reason);
  }
  Renderer* const windows = loaded_;
  return windows != nullptr ? *windows : Renderer::standard();
}

void LazyWindows::activate() {
  if (Renderer* const windows = loaded_) windows->activate();
}

void LazyWindows::beep() {
  if (Renderer* const windows = loaded_) windows->beep();
}

void LazyWindows::run(const NSAlert& alert) { shown().run(alert); }

SavePanelAnswer LazyWindows::run(const NSSavePanel& panel) { return shown().run(panel); }

bool LazyWindows::present(const std::shared_ptr<NSViewController>& controller, const std::string& title) {
  return shown().present(controller, title);
}

void LazyWindows::withdraw() {
  if (Renderer* const windows = loaded_) windows->withdraw();
}

bool LazyWindows::progress(const Progress& progress) {
  if (progress.done < progress.total) return shown().progress(progress);
  Renderer* const windows = loaded_;
  return windows == nullptr || windows->progress(progress);
}

void LazyWindows::notify(const std::string& title, const std::string& text) {
  if (Renderer* const windows = loaded_) windows->notify(title, text);
}

}  // namespace ostra
