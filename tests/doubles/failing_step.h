#pragma once
#include <exception>

namespace ostra::test {

/// Lets one of the calls of a double fail: the n-th, counted from 1 over all of them.
class FailingStep {
 public:
  /// The call number `step` will fail with `failure`.
  template <class Failure>
  void failAt(int step, const Failure& failure) {
    step_ = step;
    failure_ = std::make_exception_ptr(failure);
  }
  /// The call number `step` will be refused, where a call reports by giving nothing.
  void refuseAt(int step) { step_ = step; }

  /// Counts a call. True when it is to be refused.
  bool refuses() { return ++taken_ == step_; }
  /// Counts a call, and throws when it is to fail.
  void take() {
    if (refuses()) std::rethrow_exception(failure_);
  }
  int taken() const { return taken_; }

 private:
  int step_ = 0;
  int taken_ = 0;
  std::exception_ptr failure_;
};

}  // namespace ostra::test
