#include "front/main_thread.h"

#include <exception>

#include "platform/dispatch/queue.h"

namespace ostra {

void runOnMainThread(const std::function<void()>& work) {
  if (isMainThread()) return work();
  std::exception_ptr failure;
  mainQueue().sync([&] {
    try {
      work();
    } catch (...) {
      failure = std::current_exception();
    }
  });
  if (failure) std::rethrow_exception(failure);
}

}  // namespace ostra
