#pragma once
#include <vector>

#include <linux/filter.h>

namespace ostra {

/// What this kernel can take rights away with.
struct KernelConfinement {
  int landlockAbi = 0;  // 0: none
  bool seccomp = false;

  static KernelConfinement detect();
  bool complete() const { return landlockAbi > 0 && seccomp; }
};

/// The descriptors that a decoder keeps, by their numbers.
inline constexpr int kInputDescriptor = 3;
inline constexpr int kPixelsDescriptor = 4;
inline constexpr int kChannelDescriptor = 5;

/// The one policy of every decoder: no path can be opened, no process made, no socket, no signal, no
/// executable memory; what is left is memory, threads, reading the input and answering. Made once, before the
/// decoders are forked; applied by each of them to itself, for good.
class Confinement {
 public:
  /// With what the kernel has. Throws `std::system_error` when the filter cannot be made.
  explicit Confinement(KernelConfinement kernel);

  /// Keeps the three descriptors and closes every other one; then gives up all rights. False when the kernel
  /// refused something that it has; the process must end then.
  bool apply() const;

 private:
  KernelConfinement kernel_;
  std::vector<sock_filter> filter_;
};

}  // namespace ostra
