#include "platform/imageio/decoder/confinement.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>

#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/imageio/decoder/system_call_filter.h"

namespace ostra {
namespace {

/// Every right on files that an ABI knows: each one handled and none granted.
std::uint64_t fileRights(int abi) {
  std::uint64_t rights = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;  // the first version
  if (abi >= 2) rights |= std::uint64_t{1} << 13;                 // moving between folders
  if (abi >= 3) rights |= std::uint64_t{1} << 14;                 // shortening
  if (abi >= 5) rights |= std::uint64_t{1} << 15;                 // device control
  return rights;
}

/// The kernel's struct as of its sixth version, which the installed header may not know. An older kernel is
/// given the part that it knows.
struct Ruleset {
  std::uint64_t files = 0;
  std::uint64_t network = 0;
  std::uint64_t scopes = 0;
};

bool denyFiles(int abi) {
  Ruleset ruleset;
  ruleset.files = fileRights(abi);
  std::size_t size = sizeof ruleset.files;
  if (abi >= 4) {
    ruleset.network = 3;  // bind and connect
    size += sizeof ruleset.network;
  }
  if (abi >= 6) {
    ruleset.scopes = 3;  // abstract sockets and signals
    size += sizeof ruleset.scopes;
  }
  const long rules = syscall(SYS_landlock_create_ruleset, &ruleset, size, 0);
  if (rules < 0) return false;
  const bool restricted = syscall(SYS_landlock_restrict_self, static_cast<int>(rules), 0) == 0;
  close(static_cast<int>(rules));
  return restricted;
}

bool filterSystemCalls(const std::vector<sock_filter>& filter) {
  const sock_fprog program{static_cast<unsigned short>(filter.size()),
                           const_cast<sock_filter*>(filter.data())};
  return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

bool closeOtherDescriptors() {
  return close_range(0, kInputDescriptor - 1, 0) == 0 && close_range(kChannelDescriptor + 1, ~0U, 0) == 0;
}

}  // namespace

// The kernel may know of a right that is taken away here, and a container may let ask for it and not use it:
// so the calls are tried, in ways that change nothing.
KernelConfinement KernelConfinement::detect() {
  KernelConfinement kernel;
  const long abi = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  const bool restricts =
      syscall(SYS_landlock_restrict_self, -1, 0) != 0 && errno != ENOSYS && errno != EOPNOTSUPP;
  kernel.landlockAbi = abi > 0 && restricts ? static_cast<int>(abi) : 0;
  const unsigned action = SECCOMP_RET_KILL_PROCESS;
  kernel.seccomp = syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0 &&
                   prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, nullptr) != 0 && errno == EFAULT;
  return kernel;
}

Confinement::Confinement(KernelConfinement kernel) : kernel_(kernel) {
  if (kernel_.seccomp) filter_ = decoderSystemCallFilter();
}

bool Confinement::apply() const {
  // Not a core file, and not a process that another one may look into.
  if (!closeOtherDescriptors() || prctl(PR_SET_DUMPABLE, 0) != 0 || prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 ||
      prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    return false;
  }
  if (kernel_.landlockAbi > 0 && !denyFiles(kernel_.landlockAbi)) return false;
  return !kernel_.seccomp || filterSystemCalls(filter_);
}

}  // namespace ostra
