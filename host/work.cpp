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

bool Work::begin() {
  const std::lock_guard lock(mutex_);
  const bool goesOn = !StopSignals::received();
  if (goesOn) ++inWork_;
  if (inWork_ == 0) MainLoop::stop();
  return goesOn;
}

void Work::end() {
  const std::lock_guard lock(mutex_);
  --inWork_;
  if (inWork_ == 0 && StopSignals::received()) MainLoop::stop();
}

}  // namespace ostra
