#pragma once
#include <functional>

namespace ostra {

/// Runs blocks of work. A block must not throw.
class DispatchQueue {
 public:
  virtual ~DispatchQueue() = default;
  /// Queues the block and returns.
  virtual void async(std::function<void()> block) = 0;
  /// Queues the block and waits until it has run. Called on the main thread for the main queue it would never
  /// return; look with `isMainThread` first.
  virtual void sync(const std::function<void()>& block) = 0;
};

enum class QualityOfService { userInitiated };

/// Runs its blocks one after another on the main thread, in the order of queueing, while the main loop turns.
/// A block that runs a window modally holds up the others until the window is closed.
DispatchQueue& mainQueue();

/// Runs its blocks on background threads, side by side.
DispatchQueue& globalQueue(QualityOfService quality);

/// Whether the caller runs on the thread that started the process.
bool isMainThread();

}  // namespace ostra
