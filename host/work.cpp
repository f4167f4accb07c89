#include "host/work.h"

#include "host/stop_signals.h"
#include "platform/dispatch/main_loop.h"

namespace ostra {

void Work::run(std::size_t index, const std::string& name, const std::function<void()>& work) {
  if (!begin()) return;
  if (itemBegan_) itemBegan_(index, name);
  work();
  end();
}

void Work::stopIfSignalled() {
  const std::lock_guard lock(mutex_);
  stopIfAsked();
}

bool Work::begin() {
  const std::lock_guard lock(mutex_);
  stopIfAsked();
  if (!stopped_) ++inWork_;
  return !stopped_;
}

void Work::end() {
  const std::lock_guard lock(mutex_);
  --inWork_;
  stopIfAsked();
}

void Work::stopIfAsked() {
  if (StopSignals::received()) stopped_ = true;
  if (stopped_ && inWork_ == 0) MainLoop::stop();
}

}  // namespace ostra
