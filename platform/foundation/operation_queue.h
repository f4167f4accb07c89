#pragma once

namespace ostra {

/// The queue on which a file presenter wants its messages, and how many may run at once. This platform's
/// coordinator has no other presenter to tell about, so nothing is ever delivered on it.
class NSOperationQueue {
 public:
  int maxConcurrentOperationCount() const { return limit_; }
  void setMaxConcurrentOperationCount(int limit) { limit_ = limit; }

 private:
  int limit_ = -1;  // no limit
};

}  // namespace ostra
