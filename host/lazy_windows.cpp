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

void LazyWindows::progress(const Progress& progress) {
  if (Renderer* const windows = loaded_) windows->progress(progress);
}

}  // namespace ostra
